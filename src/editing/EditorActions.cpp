#include "editing/EditorActions.h"

#include "core/CError.h"
#include "core/globals.h"
#include "core/modCommon.h"
#include "cd/CDManager.h"
#include "delivery/ToneFormats.h"
#include "editing/ToneMeasures.h"
#include "library/CAudioPlayer.h"
#include "platform/AudioEditor2.h"
#include "skin/CDialog.h"
#include "skin/frmGenericOKDialog.h"
#include "skin/frmMessage.h"

#include <QApplication>
#include <QFile>
#include <QFileInfo>

namespace {
constexpr double kUnlimitedSeconds = 30;

// The conversion makes AMR, AMR-WB, MP3 and wave tones; QCELP and AAC not.
bool madeHere(int preferredFormat)
{
    return preferredFormat == 1 || preferredFormat == 2 || preferredFormat == 5 || preferredFormat == 6;
}

// Bytes a second of tone takes in each format the conversion makes; for the
// others the size estimate's 1600 stands.
double bytesPerSecond(int preferredFormat)
{
    switch (preferredFormat) {
    case 1: return 1600;   // AMR 12.2 kbit/s: 32 bytes a 20 ms frame
    case 2: return 2550;   // AMR-WB 19.85 kbit/s: 51 bytes a frame
    case 5: return 3000;   // MP3 24 kbit/s
    case 6: return 32000;  // wave, 16 kHz, 16 bits, mono
    default: return 1600;
    }
}

QString scratch(const QString& name) { return GetTempFolder() + name; }
}  // namespace

double LongestToneSeconds(const QString& preferredFormat, const QString& maxToneSize)
{
    const auto limit = MaxToneSizeLimit(maxToneSize);
    if (!limit)
        return kUnlimitedSeconds;
    return static_cast<double>(*limit) / bytesPerSecond(ToneFormatFor(preferredFormat).preferredFormat);
}

EditorActions::EditorActions(AudioEditor2* editor, std::function<void()> play, std::function<void()> stop,
                             QWidget* owner)
    : QObject(owner), mEditor(editor), mPlay(std::move(play)), mStop(std::move(stop)), mOwner(owner),
      mPhone(std::make_unique<CAudioPlayer>())
{
    connect(editor, &AudioEditor2::PlayStopWanted, this, &EditorActions::playOrStop);
    connect(editor, &AudioEditor2::BestPartWanted, this, &EditorActions::MarkBestPart);
    connect(editor, &AudioEditor2::HearAsPhoneWanted, this, &EditorActions::HearAsPhone);
    // One sound at a time: the editor's Play, from a button too, ends the phone's.
    connect(editor, &AudioEditor2::OnEditorPositionChanged, this, [this] {
        if (mEditor->IsPlaying() && PhonePlaying())
            stopPhone();
    });
}

EditorActions::~EditorActions() = default;

bool EditorActions::PhonePlaying() const
{
    // The player does not tell the end of its file; the tone's length does.
    return mPhone->IsPlaying() && mPhoneStarted.isValid() && mPhoneStarted.elapsed() < mPhoneMilliseconds;
}

void EditorActions::stopPhone()
{
    mPhone->StopPlaying();
    mPhoneStarted.invalidate();
}

void EditorActions::playOrStop()
{
    if (mEditor->IsPlaying() || PhonePlaying()) {
        stopPhone();
        mStop();
    } else {
        mPlay();
    }
}

void EditorActions::MarkBestPart()
{
    if (mEditor->TotalSamples() == 0)
        return;
    const double seconds = LongestToneSeconds(gstrPreferredFormat, GetAppSetting(QStringLiteral("MaxToneSize"), kSettings));
    const SongFeatures::Part part = mEditor->Features().BestPart(seconds);
    // A trimmed view that does not hold the part would hide it.
    if (part.start < mEditor->ViewStart() || part.end > mEditor->ViewEnd())
        mEditor->ZoomFull();
    mEditor->MarkPart(static_cast<int32_t>(part.start), static_cast<int32_t>(part.end));
    mEditor->SetPlayPosition(static_cast<int32_t>(part.start));
}

void EditorActions::HearAsPhone()
{
    if (mEditor->SelectionStart() == mEditor->SelectionEnd()) {
        ShowMessageWindow(QStringLiteral("frmToneNotTrimmed"));
        return;
    }
    stopPhone();
    mStop();
    const ToneFormat& format = ToneFormatFor(gstrPreferredFormat);
    // The send's own road: the cut as MP3, then the conversion with its fades and boost.
    QString cut = scratch(QStringLiteral("phonecheck.mp3"));
    QString tone = scratch(QStringLiteral("phonecheck.") + format.extension);
    QFile::remove(tone);
    QApplication::setOverrideCursor(Qt::WaitCursor);
    try {
        // The window's progress words tell of loads and sends, not of this.
        const QSignalBlocker quiet(mEditor);
        mEditor->SaveToFile(cut, true, AudioEditor2::FormatMp3);
        int32_t number = format.preferredFormat;
        TheCDManager()->ConvertAudio(cut, tone, number);
    } catch (const CError& e) {
        QApplication::restoreOverrideCursor();
        CDialog().Display(QStringLiteral("The tone could not be made: ") + e.Description(), true, mOwner);
        return;
    }
    QApplication::restoreOverrideCursor();
    if (!QFileInfo::exists(tone)) {  // a failed conversion has told its own message
        if (!madeHere(format.preferredFormat))
            CDialog().Display(QStringLiteral("Tones in your phone's format cannot be made here, so there is nothing to hear."),
                              true, mOwner);
        return;
    }
    mPhone->LoadFile(tone);
    mPhone->StartPlaying();
    mPhoneStarted.start();
    mPhoneMilliseconds = mEditor->SamplesToMilliseconds(mEditor->SelectionEnd() - mEditor->SelectionStart());
}
