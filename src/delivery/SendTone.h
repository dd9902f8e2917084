#pragma once
// The send pipeline: from the press of Send to the tone on its way. It runs
// as one long routine on the interface thread, with the window that hosts it
// disabled and a notice telling the user what goes on.
#include <QString>
#include <cstdint>

class AudioEditor2;
class QLabel;
class QObject;
class QWidget;

// The members of the main window that the send pipeline uses, and nothing else.
class SendToneHost {
public:
    virtual QWidget* HostWindow() = 0;                   // disabled, shown, and owner of the notices
    virtual AudioEditor2* HostEditor() = 0;              // AudioEditor21: the selection, the view, the cut
    virtual QString CurrentFile() const = 0;             // mstrCurrentFile
    virtual bool Trimmed() const = 0;                    // mbTrimmed
    virtual void SetLoadStage(int32_t stage) = 0;        // mintLoadStage: 2 before the cut is written
    virtual void ClearBusy() = 0;                        // mbBusy = false
    virtual QLabel* SoundFileLabel() = 0;                // lblSoundFile
    virtual QObject* LastUrlLabel() = 0;                 // lblLastURL: its Tag keeps the upload's last reply
    virtual void SetStatusText(const QString& text) = 0;
    virtual void CheckToneSize(const QString& path, bool& result) = 0;
    virtual void RefreshFreeQuillCount() = 0;

protected:
    ~SendToneHost() = default;
};

// Cuts the marked part, converts it, checks its size, asks for consent and
// hands the tone over on the direct road or the tunnel. Failures end in one
// message that begins "Send: ".
void SendTone(SendToneHost& host);

// "CID=...&SongBlob=..." for "PostSongData.asp?": the song a tone was cut from.
QString BuildSongReport(const QString& FileName);
