#pragma once
// The send pipeline: from the press of Send to the tone on its way. It runs
// as one long routine on the interface thread, with the main window disabled
// and a notice telling the user what goes on.
#include <QString>
#include <cstdint>

// A part of the sound, in samples of the whole file.
struct ToneMarks {
    int32_t start = 0;
    int32_t end = 0;
    int32_t Length() const { return end - start; }
};

// What the send pipeline asks of the window that holds the sound, and the
// outcomes it tells that window. Every control stays on the window's side.
class SendToneHost {
public:
    // The file of the sound in the editor; empty when no sound is there.
    virtual QString CurrentFile() const = 0;
    virtual bool Trimmed() const = 0;
    // The part to send: for a trimmed sound its trimmed view, which becomes
    // the marked part; otherwise the marks as they stand.
    virtual ToneMarks MarkedPart() = 0;
    // Writes the marked part (or, with selectionOnly false, the whole sound)
    // as MP3, the progress showing in the status line. Raises CError.
    virtual void WriteCut(const QString& path, bool selectionOnly) = 0;

    virtual QString StatusText() const = 0;
    virtual void SetStatusText(const QString& text) = 0;
    // The tone is on its way: the status line says so in plain type.
    virtual void ShowSent(const QString& text) = 0;
    // The window takes no input while busy; the end of a send clears the
    // busy mark that the cut's progress set.
    virtual void SetBusy(bool busy) = 0;
    // The sound's file has gone from the disk: nothing of it is left to send.
    virtual void SoundGone() = 0;
    // The count of free quills changed.
    virtual void RefreshFreeQuillCount() = 0;
    // The upload's last reply, for the hidden aid that opens it.
    virtual void KeepLastReply(const QString& reply) = 0;

protected:
    ~SendToneHost() = default;
};

// Cuts the marked part, converts it, checks its size, asks for consent and
// hands the tone over on the direct road or the tunnel. Failures end in one
// message that begins "Send: ".
void SendTone(SendToneHost& host);

// "CID=...&SongBlob=..." for "PostSongData.asp?": the song a tone was cut from.
QString BuildSongReport(const QString& FileName);
