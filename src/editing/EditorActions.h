#pragma once
// What the editor's keys and context menu ask of the window around it:
// Space plays the marked part or stops, "Find the best part" marks the part
// a listener would pick at the longest length the size limit allows for the
// phone's format, and "Hear it as the phone will" makes that tone from the
// marked part in a scratch file, with the conversion's fades and boost, and
// plays it. The main window and the zoom window each make one.
#include <QElapsedTimer>
#include <QObject>
#include <QString>
#include <functional>
#include <memory>

class AudioEditor2;
class CAudioPlayer;
class QWidget;

// Seconds of tone that fit within a "MaxToneSize" value in the format the
// phone takes (the login's format word); 30 when the size is unlimited.
double LongestToneSeconds(const QString& preferredFormat, const QString& maxToneSize);

class EditorActions : public QObject {
    Q_OBJECT
public:
    // play and stop are the window's own Play and Stop handlers.
    EditorActions(AudioEditor2* editor, std::function<void()> play, std::function<void()> stop, QWidget* owner);
    ~EditorActions() override;

    void MarkBestPart();
    void HearAsPhone();
    bool PhonePlaying() const;

private:
    void playOrStop();
    void stopPhone();

    AudioEditor2* mEditor;
    std::function<void()> mPlay;
    std::function<void()> mStop;
    QWidget* mOwner;
    std::unique_ptr<CAudioPlayer> mPhone;
    QElapsedTimer mPhoneStarted;
    qint64 mPhoneMilliseconds = 0;
};
