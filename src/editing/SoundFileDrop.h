#pragma once
// A sound file dropped on a window opens as Open would; and the Open
// dialog's filter of every sound this machine decodes.
#include <QObject>
#include <QString>
#include <functional>

class QWidget;

// The Open dialog's "All audio (*.aac, *.flac, ...)".
QString AllAudioFilter();

class SoundFileDrop : public QObject {
    Q_OBJECT
public:
    // open gets the dropped file's path; the window takes drops from now on.
    SoundFileDrop(QWidget* window, std::function<void(const QString&)> open);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    QWidget* mWindow;
    std::function<void(const QString&)> mOpen;
};
