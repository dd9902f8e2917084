#pragma once
// The one working window: the waveform editor and the buttons around it. It
// decides, for each press, what the sound in the editor now is (none, a
// loaded file, a trimmed part of it, a recording in the making) and hands
// the result to the send pipeline.
#include "delivery/SendTone.h"
#include "editing/CToneEditor.h"
#include "skin/CSkinWindow.h"

#include <functional>
#include <memory>

class AudioEditor2;
class CAudioPlayer;
class CAudioRecorder;
class CClickLabel;
class NCTAmpBar2;
class NCTSliderB2;

class frmMain : public CSkinWindow, private SendToneHost {
    Q_OBJECT
public:
    frmMain();
    ~frmMain() override;

    void RefreshFreeQuillCount() override;
    // The one load of every road; caption is what the status line then
    // shows, the file's name when empty. A take's failure is told as the
    // ordinary one. True when the sound is in the editor.
    bool LoadSoundFile(const QString& path, const QString& caption = QString(),
                       CToneEditor::Source source = CToneEditor::Source::Chosen);
    void SetStatusText(const QString& text) override;
    void ApplyWindowMode();
    void ClearToneDisplay();
    // Record mode: the first starts a take after frmStartRecording, the
    // second ends it and loads it, or with bDiscard leaves it in the scratch folder.
    void StartRecordingNow();
    void StopRecordingNow(bool bDiscard);
    // The send pipeline lives with the delivery code; this window is its host.
    void SendTone();
    // The backdrop that covers the controls while the login window stands over this one.
    void ShowLoginBackdrop(int width, int height);
    void HideLoginBackdrop(bool parkAside);
    void ResetButtonPictures();

    bool mbRecordMode = false;
    QString mstrRecordingPath;
    bool mbRecording = false;
    std::unique_ptr<CAudioRecorder> mobjRecord;
    std::unique_ptr<CAudioPlayer> mobjRecordAudioPlayer;  // here it is only ever stopped

    // The sound in the editor, with its editor and slider.
    CToneEditor* mobjTone = nullptr;
    AudioEditor2* AudioEditor21 = nullptr;
    NCTSliderB2* NCTSliderB21 = nullptr;

signals:
    // lblClose, cmdSignOut and lblMinimize: the start-up shell decides what they end.
    void CloseWanted();
    void SignOutWanted();
    void MinimiseWanted();

protected:
    void Form_Load() override;
    bool DragAllowed() const override { return !mobjTone || !mobjTone->mbBusy; }

private:
    // What the send pipeline asks and tells.
    QString CurrentFile() const override;
    bool Trimmed() const override { return mobjTone->mbTrimmed; }
    ToneMarks MarkedPart() override { return mobjTone->MarkTrimmedPart(); }
    void WriteCut(const QString& path, bool selectionOnly) override { mobjTone->WriteCut(path, selectionOnly); }
    QString StatusText() const override;
    void ShowSent(const QString& text) override;
    void SetBusy(bool busy) override;
    void SoundGone() override;
    void KeepLastReply(const QString& reply) override;

    void buildControls();
    QLabel* label(const char* name) const;
    CClickLabel* hotSpot(const char* name) const;
    void onRelease(const char* button, const std::function<void()>& handler);
    // Open, My Music and Rip leave record mode, ending a take first.
    void LeaveRecordMode();

    void cmdOpen_Released();
    void cmdMyMusic_Released();
    void cmdRecord_Released();
    void cmdRip_Released();
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
};

// The one main window of the run, made on first use (not loaded).
frmMain& MainForm();
// Drops it; the next MainForm() makes a new one (tests, the end of the run).
void DropMainForm();
