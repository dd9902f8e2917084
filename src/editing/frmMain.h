#pragma once
// The one working window: the waveform editor and the buttons around it. It
// decides, for each press, what the sound in the editor now is (none, a
// loaded file, a trimmed part of it, a recording in the making) and hands
// the result to the send pipeline.
#include "delivery/SendTone.h"
#include "skin/CSkinWindow.h"

#include <cstdint>
#include <memory>

class AudioEditor2;
class CAudioPlayer;
class CAudioRecorder;
class CClickLabel;
class NCTAmpBar2;
class NCTSliderB2;
class QTimer;
struct ToneView;

class frmMain : public CSkinWindow, private SendToneHost {
    Q_OBJECT
public:
    frmMain();
    ~frmMain() override;

    void RefreshFreeQuillCount() override;
    void LoadSoundFile(const QString& path);
    void LoadIntoEditor(const QString& path);
    void SetStatusText(const QString& text) override;
    void ApplyWindowMode();
    void ClearToneDisplay();
    // Record mode: the first starts a take after frmStartRecording, the
    // second ends it and loads it, or with bDiscard leaves it in the scratch folder.
    void StartRecordingNow();
    void StopRecordingNow(bool bDiscard);
    // True when the send may go on: the tone is within "MaxToneSize", or the
    // user agreed to send it anyway.
    void CheckToneSize(const QString& path, bool& result) override;
    // The send pipeline lives with the delivery code; this window is its host.
    void SendTone();
    // The backdrop that covers the controls while the login window stands over this one.
    void ShowLoginBackdrop(int width, int height);
    void HideLoginBackdrop(bool parkAside);
    void ResetButtonPictures();

    int32_t mintLoadStage = 0;  // 1 "Loading. Please wait (", 2 "Preparing ringtone ("
    QString mstrCurrentFile;
    int16_t mintVolumeDirection = 0;
    bool mbRecordMode = false;
    bool mbPlaying = false;  // nothing reads it to decide
    bool mbBusy = false;
    float msngTrimOffset = 0;
    bool mbResetting = false;
    QString mstrRecordingPath;
    bool mbRecording = false;
    float msngFileLength = 0;
    bool mbTrimmed = false;
    std::unique_ptr<CAudioRecorder> mobjRecord;
    std::unique_ptr<CAudioPlayer> mobjRecordAudioPlayer;  // here it is only ever stopped

    AudioEditor2* AudioEditor21 = nullptr;
    NCTSliderB2* NCTSliderB21 = nullptr;

signals:
    // lblClose, cmdSignOut and lblMinimize: the start-up shell decides what they end.
    void CloseWanted();
    void SignOutWanted();
    void MinimiseWanted();

protected:
    void Form_Load() override;
    bool DragAllowed() const override { return !mbBusy; }

private:
    // What the send pipeline uses.
    QWidget* HostWindow() override { return this; }
    AudioEditor2* HostEditor() override { return AudioEditor21; }
    QString CurrentFile() const override { return mstrCurrentFile; }
    bool Trimmed() const override { return mbTrimmed; }
    void SetLoadStage(int32_t stage) override { mintLoadStage = stage; }
    void ClearBusy() override { mbBusy = false; }
    QLabel* SoundFileLabel() override { return label("lblSoundFile"); }
    QObject* LastUrlLabel() override { return findChild<QObject*>(QStringLiteral("lblLastURL")); }

    void buildControls();
    QLabel* label(const char* name) const;
    CClickLabel* hotSpot(const char* name) const;
    void forgetSound();

    ToneView view();
    void AudioEditor21_OnEditorProgress(int percent);
    void cmdOpen_Released();
    void leaveRecordMode();
    void openSoundFile(const QString& path);  // a file dropped on the window
    void cmdMyMusic_Released();
    void cmdRecord_Released();
    void cmdRip_Released();
    void cmdTrim_Released();
    void cmdReset_Released();
    void cmdPlay_Released();
    void cmdStop_Released();
    void cmdSend_Released();
    void imgZoom_Click();
    void lblLastURL_DblClick();
    void lblSettings_DblClick();
    void lblAbout_DblClick();
    void mobjRecord_Timer(double SecondsElapsed);

    QImage mNormalFace;
    QImage mRecordFace;
    NCTAmpBar2* ampbarLeft = nullptr;
    NCTAmpBar2* ampbarRight = nullptr;
    QTimer* tmrVolume = nullptr;
};

// The one main window of the run, made on first use (not loaded).
frmMain& MainForm();
// Drops it; the next MainForm() makes a new one (tests, the end of the run).
void DropMainForm();
