#include "editing/ToneView.h"

#include "core/CError.h"
#include "core/modCommon.h"
#include "core/numbers.h"
#include "core/twips.h"
#include "editing/ToneMeasures.h"
#include "platform/AudioEditor2.h"
#include "platform/NCTSliderB2.h"
#include "skin/frmMessage.h"

#include <QLabel>

void ToneView::SelectionChanged() const
{
    const int32_t length = editor->SelectionEnd() - editor->SelectionStart();
    const float seconds = MillisecondsToSeconds(editor->SamplesToMilliseconds(length));
    if (seconds == 0)
        return;
    toneLength->setText(LengthCaption(seconds));
    toneSize->setText(ToneSizeCaption(seconds));
    PositionChanged();
}

void ToneView::PositionChanged() const
{
    // By this order of steps the milliseconds of a thousandth of the
    // position are the position in seconds.
    const int32_t seconds = editor->SamplesToMilliseconds(RoundToEven(editor->PlayPosition() / 1000.0));
    position->setText(resetting ? kPositionEmpty : PositionCaption(seconds, trimOffset));
}

bool ToneView::SelectionMarked() const
{
    const int32_t start = editor->SelectionStart();
    const int32_t end = editor->SelectionEnd();
    if ((start == 0 && end == 0) || start == end) {
        ShowMessageWindow(QStringLiteral("frmToneNotTrimmed"));
        return false;
    }
    return true;
}

void ToneView::TrimToSelection() const
{
    const int32_t start = editor->SelectionStart();
    trimOffset = static_cast<float>(editor->SamplesToMilliseconds(RoundToEven(start / 1000.0)));
    editor->ZoomToRange(start, editor->SelectionEnd());
    PositionChanged();
    trimmed = true;
}

void ToneView::Reset(const std::function<void()>& stop) const
{
    ErrObject ignored;
    resetting = true;
    ResumeNext(ignored, [&] { editor->ZoomFull(); });
    toneLength->setText(kToneLengthReset);
    toneSize->setText(kToneSizeReset);
    ResumeNext(ignored, [&] {
        editor->SetSelectionStart(0);
        editor->SetSelectionEnd(0);
        editor->SetPlayPosition(0);
    });
    ResumeNext(ignored, stop);
    trimOffset = 0;
    resetting = false;
    trimmed = false;
}

void StepVolume(NCTSliderB2* slider, int16_t direction)
{
    if (direction != 0)
        slider->SetValue(slider->Value() + 3000 * direction);
}

QRect ArtworkRect(int x, int y, int width, int height)
{
    return QRect(TwipsToPixelsX(x * 15.0), TwipsToPixelsY(y * 15.0), TwipsToPixelsX(width * 15.0),
                 TwipsToPixelsY(height * 15.0));
}
