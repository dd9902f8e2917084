#include "FuzzKit.h"

#include <QApplication>
#include <QDialog>
#include <QFile>
#include <QTemporaryDir>
#include <cstdlib>
#include <memory>

namespace {
void Quiet(QtMsgType, const QMessageLogContext&, const QString&) {}

// Closes each modal window the moment it shows, as a user who presses Esc.
class DialogCloser : public QObject {
protected:
    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (event->type() == QEvent::Show) {
            if (auto* dialog = qobject_cast<QDialog*>(watched); dialog && dialog->isModal())
                QMetaObject::invokeMethod(dialog, &QDialog::reject, Qt::QueuedConnection);
        }
        return false;
    }
};
}  // namespace

extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qputenv("QT_LOGGING_RULES", "*=false");
    qInstallMessageHandler(Quiet);
    // Settings and scratch files of a run stay in its own folder.
    qputenv("XDG_CONFIG_HOME", ScratchFolder().toLocal8Bit());
    static QApplication app(*argc, *argv);
    static DialogCloser closer;
    app.installEventFilter(&closer);
    return 0;
}

QString TextOf(const uint8_t* data, size_t size)
{
    return QString::fromUtf8(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
}

QString ScratchFolder()
{
    static const std::unique_ptr<QTemporaryDir> folder = std::make_unique<QTemporaryDir>();
    return folder->path();
}

QString ScratchFile(const uint8_t* data, size_t size, const QString& name)
{
    const QString path = ScratchFolder() + QLatin1Char('/') + name;
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate))
        std::abort();  // the folder is ours: a failure here is the machine's, not the input's
    file.write(reinterpret_cast<const char*>(data), static_cast<qint64>(size));
    return path;
}

QString SoundFile(const uint8_t* data, size_t size)
{
    static const char* const kNames[] = {"input.mp3", "input.wav", "input.wma", "input.amr"};
    if (size == 0)
        return ScratchFile(data, 0, QString::fromLatin1(kNames[0]));
    return ScratchFile(data + 1, size - 1, QString::fromLatin1(kNames[data[0] % 4]));
}

void MakeDiscBin()
{
    static const bool made = [] {
        QByteArray bin(2 * 75 * 2352, '\0');
        for (qsizetype i = 0; i < bin.size(); i += 4)
            bin[i] = char(i / 4 % 64);
        ScratchFile(reinterpret_cast<const uint8_t*>(bin.constData()), size_t(bin.size()), QStringLiteral("disc.bin"));
        return true;
    }();
    (void)made;
}
