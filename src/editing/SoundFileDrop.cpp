#include "editing/SoundFileDrop.h"

#include "platform/AudioFormats.h"

#include <QDragEnterEvent>
#include <QDropEvent>
#include <QFileInfo>
#include <QMimeData>
#include <QWidget>

namespace {
// One local file that is no folder; anything else is not taken.
QString droppedFile(const QMimeData* data)
{
    if (!data || !data->hasUrls() || data->urls().size() != 1 || !data->urls().first().isLocalFile())
        return {};
    const QString path = data->urls().first().toLocalFile();
    return QFileInfo(path).isFile() ? path : QString();
}
}  // namespace

QString AllAudioFilter()
{
    QStringList patterns;
    for (const QString& extension : DecodableAudioExtensions())
        patterns << QStringLiteral("*.") + extension;
    return QStringLiteral("All audio (") + patterns.join(QStringLiteral(", ")) + QLatin1Char(')');
}

SoundFileDrop::SoundFileDrop(QWidget* window, std::function<void(const QString&)> open)
    : QObject(window), mWindow(window), mOpen(std::move(open))
{
    window->setAcceptDrops(true);
    window->installEventFilter(this);
}

bool SoundFileDrop::eventFilter(QObject* watched, QEvent* event)
{
    if (watched != mWindow)
        return false;
    if (event->type() == QEvent::DragEnter || event->type() == QEvent::DragMove) {
        auto* drag = static_cast<QDropEvent*>(event);
        // A busy window (a load, a send) takes nothing, as it takes no click.
        if (mWindow->isEnabled() && !droppedFile(drag->mimeData()).isEmpty())
            drag->acceptProposedAction();
        else
            drag->ignore();
        return true;
    }
    if (event->type() == QEvent::Drop) {
        auto* drop = static_cast<QDropEvent*>(event);
        const QString path = droppedFile(drop->mimeData());
        if (path.isEmpty() || !mWindow->isEnabled())
            return true;
        drop->acceptProposedAction();
        mOpen(path);
        return true;
    }
    return false;
}
