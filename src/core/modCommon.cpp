#include "core/modCommon.h"

#include "core/CError.h"
#include "core/MainWindow.h"
#include "core/MsgBox.h"
#include "core/codepage.h"
#include "core/globals.h"
#include "core/modEncryption.h"
#include "core/numbers.h"
#include "core/seams.h"

#include <QApplication>
#include <QBitmap>
#include <QCursor>
#include <QDir>
#include <QEvent>
#include <QFile>
#include <QImage>
#include <QLineEdit>
#include <QLocale>
#include <QScreen>
#include <QSettings>
#include <QTimer>
#include <QWidget>
#include <cmath>

namespace {
QSettings store()
{
    return QSettings(QSettings::IniFormat, QSettings::UserScope, kAppName, kAppName);
}

QString settingPath(const QString& key, const QString& section)
{
    return section + QLatin1Char('/') + key;
}

// One clear word per run when the store cannot be written, not one per value.
void reportUnwritableStore(const QSettings& s)
{
    static bool told = false;
    if (told)
        return;
    told = true;
    MsgBox(QStringLiteral("Quillotone could not save its settings to %1.\n"
                          "Check that the folder exists and can be written; until then changes are lost when the program ends.")
               .arg(QDir::toNativeSeparators(s.fileName())),
           QMessageBox::Warning);
}

// Keys that people and installers write into the file, never the program.
// The INI reader would take a comma for a list, ";" for a comment and "\"
// for an escape, and so change a URL; these are read as they stand.
const QStringList kWrittenByHand = {QStringLiteral("UseTunnel"),  QStringLiteral("QuillAssistURL"),
                                    QStringLiteral("Logging"),    QStringLiteral("Origin"),
                                    QStringLiteral("PartnerID"),  QStringLiteral("VolumeBoost"),
                                    QStringLiteral("QueuePath"),  QStringLiteral("ServiceURL"),
                                    QStringLiteral("ServiceCertificate")};

// The text after "key=" on the key's last line in the section, blanks around it dropped.
QString handWrittenValue(const QString& key, const QString& section)
{
    QFile file(SettingsFilePath());
    if (!file.open(QIODevice::ReadOnly))
        return {};
    QString value;
    bool inSection = false;
    for (const QByteArray& raw : file.readAll().split('\n')) {
        const QString line = QString::fromUtf8(raw).trimmed();
        if (line.startsWith(QLatin1Char('['))) {
            inSection = line == QLatin1Char('[') + section + QLatin1Char(']');
            continue;
        }
        const qsizetype eq = line.indexOf(QLatin1Char('='));
        if (inSection && eq > 0 && QStringView(line).left(eq).trimmed() == key)
            value = line.mid(eq + 1).trimmed();
    }
    return value;
}

void pumpEvents()
{
    QCoreApplication::processEvents();
}
}  // namespace

QString SettingsFilePath()
{
    return store().fileName();
}

QString GetAppSetting(const QString& key, const QString& section)
{
    if (section == kSettings && kWrittenByHand.contains(key))
        return handWrittenValue(key, section);
    return store().value(settingPath(key, section)).toString();
}

void SaveAppSetting(const QString& key, const QString& value, const QString& section)
{
    QSettings s = store();
    s.setValue(settingPath(key, section), value);
    s.sync();
    if (s.status() != QSettings::NoError)
        reportUnwritableStore(s);
}

void DeleteAppSetting(const QString& key, const QString& section)
{
    QSettings s = store();
    s.remove(settingPath(key, section));
    s.sync();
    if (s.status() != QSettings::NoError)
        reportUnwritableStore(s);
}

QString LogFilePath()
{
    return ProgramFolderPath(QStringLiteral("qtlog.txt"));
}

QString DefaultDateTimeText(const QDateTime& when)
{
    return QLocale::system().toString(when, QLocale::ShortFormat);
}

void WriteLog(const QString& message)
{
    if (GetAppSetting(QStringLiteral("Logging"), kSettings) != QLatin1String("1"))
        return;
    const QString stamp = DefaultDateTimeText(seams().now());
    QFile log(LogFilePath());
    if (!log.open(QIODevice::WriteOnly | QIODevice::Append))
        throw CError(ErrNo::PathFileAccess, QStringLiteral("Path/File access error"), QStringLiteral("WriteLog"));
    const QByteArray line = codepage::ToAnsi(stamp + QStringLiteral(": ") + message) + '\n';
    if (log.write(line) != line.size() || !log.flush())
        throw CError(ErrNo::DiskFull, QStringLiteral("Disk full"), QStringLiteral("WriteLog"));
}

QString EncodeForUrl(const QString& value)
{
    static const char digits[] = "0123456789ABCDEF";
    qsizetype first = 0;
    qsizetype last = value.size();
    while (first < last && value[first] == QLatin1Char(' '))
        ++first;
    while (last > first && value[last - 1] == QLatin1Char(' '))
        --last;

    QString out;
    out.reserve((last - first) * 3);
    const auto escape = [&](unsigned char b) {
        out += QLatin1Char('%');
        out += QLatin1Char(digits[b >> 4]);
        out += QLatin1Char(digits[b & 0xF]);
    };
    for (qsizetype i = first; i < last; ++i) {
        const QChar c = value[i];
        // A character outside the code page counts as its "?", and is escaped as one.
        const unsigned char b = codepage::ToAnsiByte(c);
        switch (b) {
        case 0: case 1: case 2: case 3: case 4: case 5: case 6: case 7: case 8: case 9:
        case 10: case 13:
        case '"': case '&': case '/': case ':': case '<': case '=': case '>': case '?':
            escape(b);
            break;
        case ' ':
            out += QLatin1Char('+');
            break;
        default:
            out += c;
        }
        if (c == QLatin1Char('_'))
            pumpEvents();
    }
    return out;
}

void OpenInBrowser(const QString& target)
{
    seams().openUrl(target);
}

QString GetTempFolder()
{
    QString folder = QDir::cleanPath(seams().tempFolder());
    if (!folder.endsWith(QLatin1Char('/')))
        folder += QLatin1Char('/');
    return folder;
}

void SetMousePointer(int shape)
{
    while (QGuiApplication::overrideCursor())
        QGuiApplication::restoreOverrideCursor();
    if (shape == vbHourglass)
        QGuiApplication::setOverrideCursor(Qt::WaitCursor);
}

int MousePointer()
{
    const QCursor* c = QGuiApplication::overrideCursor();
    return c && c->shape() == Qt::WaitCursor ? vbHourglass : vbDefault;
}

void SetFormEnabled(QWidget* window, bool bEnabled)
{
    if (window) {
        // Every control of this window, nested ones too; timers stop or run
        // with the rest. A window owned by this one (a notice, the upload
        // window) is a window of its own and keeps its state.
        const auto own = [window](QObject* object) {
            for (QObject* o = object; o && o != window; o = o->parent()) {
                if (o->isWidgetType() && static_cast<QWidget*>(o)->isWindow())
                    return false;
            }
            return true;
        };
        for (QWidget* control : window->findChildren<QWidget*>()) {
            if (own(control))
                control->setEnabled(bEnabled);
        }
        for (QTimer* timer : window->findChildren<QTimer*>()) {
            if (!own(timer))
                continue;
            if (bEnabled)
                timer->start();
            else
                timer->stop();
        }
    }
    pumpEvents();
    SetMousePointer(bEnabled ? vbDefault : vbHourglass);
}

void SetLayeredColourKey(QWidget* window, const QColor& colour, uint8_t alpha, uint8_t flags)
{
    if (!window)
        return;
    if (flags & LWA_ALPHA)
        window->setWindowOpacity(alpha / 255.0);
    if (flags & LWA_COLORKEY) {
        // The shape is cut wherever the window's face shows the key colour, so
        // those pixels are neither drawn nor hit.
        window->clearMask();
        QImage face = window->grab().toImage();
        if (face.size() != window->size())
            face = face.scaled(window->size());
        QImage shape = face.convertToFormat(QImage::Format_RGB32).createMaskFromColor(colour.rgb(), Qt::MaskOutColor);
        // Bit 1 marks the face; name its colours so the bitmap reads it as color1.
        shape.setColorTable({qRgb(255, 255, 255), qRgb(0, 0, 0)});
        window->setMask(QBitmap::fromImage(shape));
    }
}

void PrepareDialog(QWidget* window)
{
    SetLayeredColourKey(window, kColourKeyBlue, 100, LWA_COLORKEY);
    CenterOnMainWindow(window);
}

namespace {
void placeCentredOn(QWidget* window, const QRectF& area)
{
    const double left = area.left() + area.width() / 2 - window->width() / 2.0;
    const double top = area.top() + area.height() / 2 - window->height() / 2.0;
    window->move(RoundToEven(left), RoundToEven(top));
}
}  // namespace

void CenterOnScreen(QWidget* window)
{
    if (!window)
        return;
    const QScreen* screen = window->screen() ? window->screen() : QGuiApplication::primaryScreen();
    if (screen)
        placeCentredOn(window, QRectF(QPointF(0, 0), QSizeF(screen->geometry().size())));
}

void CenterOnMainWindow(QWidget* window)
{
    if (!window)
        return;
    QWidget* main = MainWindow();
    if (!main) {
        CenterOnScreen(window);
        return;
    }
    // No clamp: the dialog may stand partly off the screen, as the main window does.
    placeCentredOn(window, QRectF(main->geometry()));
}

void SelectAllText(QLineEdit* textbox)
{
    if (textbox)
        textbox->selectAll();
}

namespace {
class SelectOnFocus : public QObject {
public:
    using QObject::QObject;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override
    {
        // After the click that gave the focus, which would undo the selection.
        if (event->type() == QEvent::FocusIn) {
            auto* box = static_cast<QLineEdit*>(watched);
            QTimer::singleShot(0, box, [box] { SelectAllText(box); });
        }
        return false;
    }
};
}  // namespace

void SelectAllOnFocus(QLineEdit* textbox)
{
    textbox->installEventFilter(new SelectOnFocus(textbox));
}

QString FileToHexString(const QString& path)
{
    static const char digits[] = "0123456789ABCDEF";
    QFile file(path);
    if (!file.exists())
        throw CError(ErrNo::FileNotFound, QStringLiteral("File not found"), QStringLiteral("FileToHexString"));
    if (!file.open(QIODevice::ReadOnly))
        throw CError(ErrNo::PathFileAccess, QStringLiteral("Path/File access error"), QStringLiteral("FileToHexString"));
    const QByteArray bytes = file.readAll();
    if (file.error() != QFileDevice::NoError)
        throw CError(ErrNo::PathFileAccess, QStringLiteral("Path/File access error"), QStringLiteral("FileToHexString"));

    QString hex(bytes.size() * 2, Qt::Uninitialized);
    QChar* out = hex.data();
    for (qsizetype i = 0; i < bytes.size(); ++i) {
        const auto b = static_cast<unsigned char>(bytes[i]);
        *out++ = QLatin1Char(digits[b >> 4]);
        *out++ = QLatin1Char(digits[b & 0xF]);
        if ((i + 1) % 1000 == 0)
            pumpEvents();
    }
    return hex;
}

QString BuildAccountQuery()
{
    return QStringLiteral("MobileNumber=") + gstrMobileNumber + QStringLiteral("&Password=") +
           Decrypt(gstrPassword, gstrMachineKey);
}

QString GuidToBracedString(const QUuid& guid)
{
    return guid.toString(QUuid::WithBraces).toUpper();
}

QString CreateUniqueName()
{
    QString name = GuidToBracedString(QUuid::createUuid());
    name.remove(QLatin1Char('-'));
    return name.mid(1, name.size() - 2);
}

bool IsEvenNumber(int32_t n)
{
    return n % 2 <= 0;
}

bool IsNumeric(const QString& text)
{
    bool ok = false;
    text.trimmed().toDouble(&ok);
    return ok;
}

namespace {
double WholeNumber(const QString& text, double least, double greatest)
{
    bool ok = false;
    const double value = text.trimmed().toDouble(&ok);
    if (!ok)
        throw CError(ErrNo::TypeMismatch, QStringLiteral("Type mismatch"));
    const double rounded = std::nearbyint(value);
    if (rounded < least || rounded > greatest)
        throw CError(ErrNo::Overflow, QStringLiteral("Overflow"));
    return rounded;
}
}  // namespace

int16_t TextToInt16(const QString& text)
{
    return static_cast<int16_t>(WholeNumber(text, INT16_MIN, INT16_MAX));
}

int32_t TextToInt32(const QString& text)
{
    return static_cast<int32_t>(WholeNumber(text, INT32_MIN, INT32_MAX));
}

const QString& Field(const QStringList& fields, qsizetype index)
{
    if (index < 0 || index >= fields.size())
        throw CError(ErrNo::SubscriptOutOfRange, QStringLiteral("Subscript out of range"));
    return fields[index];
}
