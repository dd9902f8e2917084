#pragma once
// Streams a take from the sound card's default input into a wave file in the
// scratch folder "qtrecordings" of the temporary folder, and moves the file
// to "recording" + n + ".wav" when the take ends. While it runs it drives two
// level bars and tells the elapsed seconds.
#include <QObject>
#include <QPointer>
#include <QString>
#include <cstdint>
#include <memory>

class NCTAmpBar2;
class NCTAudioFileWriter2;
class NCTAudioRecord2;

// A recorder level (0 silence .. 80 full scale) as a bar value: the lowest
// 20 are dropped and the rest spread over the bar, never below 2 in a take.
int AmpBarValue(int level);

class CAudioRecorder : public QObject {
    Q_OBJECT
public:
    explicit CAudioRecorder(QObject* parent = nullptr);
    ~CAudioRecorder() override;

    // A failed device start is not reported here: the take runs empty and
    // its load is what fails. FileToCreate is kept but does not name the take.
    void StartRecording(const QString& FileToCreate, NCTAmpBar2* LeftChannelAmpRef, NCTAmpBar2* RightChannelAmpRef);
    // Raises CError when the take cannot be kept (the disk filled, the move
    // failed); the take has ended all the same.
    void StopRecording();
    bool Recording() const { return mbRecording; }
    bool RecordingExists() const;
    QString CurrentRecordingPath() const { return mstrCurrentRecordingPath; }

    static QString ScratchFolder();

signals:
    void Timer(double ElapsedTime);

private:
    void mobjAudioRecord_EndArrayRecord();
    void mobjAudioRecord_Timer(int64_t CurrentSamples, int LevelLeft, int LevelRight);
    void moveToFinalName();

    // The writer outlives the recorder, which hands out a last block as it stops.
    std::unique_ptr<NCTAudioFileWriter2> mobjAudioFile;
    std::unique_ptr<NCTAudioRecord2> mobjAudioRecord;
    QString mstrFileToCreate;  // kept, never used: the take is named here
    QString mstrCurrentRecordingPath;
    QPointer<NCTAmpBar2> mobjLeftBar;
    QPointer<NCTAmpBar2> mobjRightBar;
    bool mbRecording = false;
};
