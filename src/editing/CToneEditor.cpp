#include "editing/CToneEditor.h"

#include "core/CError.h"
#include "core/modCommon.h"
#include "core/numbers.h"
#include "core/twips.h"
#include "editing/ToneMeasures.h"
#include "platform/AudioEditor2.h"
#include "platform/NCTSliderB2.h"
#include "platform/SoundOutput.h"
#include "skin/CClickLabel.h"
#include "skin/CDialog.h"
#include "skin/frmGenericOKDialog.h"
#include "skin/CSkinWindow.h"
#include "skin/ControlTag.h"
#include "skin/SkinStyle.h"
#include "skin/frmMessage.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QLabel>
#include <QTimer>

namespace {
const QString kLoadingWords = QStringLiteral("Loading. Please wait (");
const QString kPreparingWords = QStringLiteral("Preparing ringtone (");
}  // namespace

CToneEditor::CToneEditor(CSkinWindow* window, const ToneEditorPlaces& places)
    : QObject(window), mWindow(window)
{
    setObjectName(QStringLiteral("mobjTone"));
    AudioEditor21 = new AudioEditor2(places.editorParent);
    AudioEditor21->setObjectName(QStringLiteral("AudioEditor21"));
    AudioEditor21->setGeometry(places.editor);
    AudioEditor21->SetAppearance(EditorAppearance{});
    NCTSliderB21 = new NCTSliderB2(window);
    NCTSliderB21->setObjectName(QStringLiteral("NCTSliderB21"));
    NCTSliderB21->setGeometry(places.slider);

    imgLoading = new QLabel(window);
    imgLoading->setObjectName(QStringLiteral("imgLoading"));
    imgLoading->setGeometry(TwipsToPixelsX(places.loading.x()), TwipsToPixelsY(places.loading.y()),
                            TwipsToPixelsX(1800), TwipsToPixelsY(240));
    imgLoading->setText(QStringLiteral("\u231B Loading\u2026"));
    imgLoading->setFont(skin::Font(8.5, true));
    imgLoading->hide();

    lblSongLength = window->Label(QStringLiteral("lblSongLength"));
    lblToneLength = window->Label(QStringLiteral("lblToneLength"));
    lblToneSize = window->Label(QStringLiteral("lblToneSize"));
    lblCurrentPosition = window->Label(QStringLiteral("lblCurrentPosition"));
    lblSongLength->setText(kSongLengthEmpty);
    lblToneLength->setText(kToneLengthCleared);
    lblToneSize->setText(kToneSizeCleared);
    lblCurrentPosition->setText(kPositionEmpty);

    connect(AudioEditor21, &AudioEditor2::OnEditorProgress, this, &CToneEditor::AudioEditor21_OnEditorProgress);
    connect(AudioEditor21, &AudioEditor2::OnEditorSelectionChanged, this, &CToneEditor::SelectionChanged);
    connect(AudioEditor21, &AudioEditor2::OnEditorPositionChanged, this, &CToneEditor::PositionChanged);
    connect(AudioEditor21, &AudioEditor2::OnEditorPositionSet, this, &CToneEditor::PositionChanged);
    connect(NCTSliderB21, &NCTSliderB2::OnVolumeSliderMoved, AudioEditor21, &AudioEditor2::SetVolume);
    NCTSliderB21->SetValue(32000);
    AudioEditor21->SetVolume(NCTSliderB21->Value());

    // Holding a volume hot spot moves the slider 3000 at each tick.
    auto* up = window->findChild<CClickLabel*>(QStringLiteral("lblVolumeUp"));
    auto* down = window->findChild<CClickLabel*>(QStringLiteral("lblVolumeDown"));
    connect(up, &CClickLabel::MouseDown, this, [this] { mintVolumeDirection = 1; });
    connect(down, &CClickLabel::MouseDown, this, [this] { mintVolumeDirection = -1; });
    for (CClickLabel* spot : {up, down})
        connect(spot, &CClickLabel::MouseUp, this, [this] { mintVolumeDirection = 0; });
    // A child of the window, so that SetFormEnabled stops it while the window is busy.
    tmrVolume = new QTimer(window);
    tmrVolume->setObjectName(QStringLiteral("tmrVolume"));
    tmrVolume->setInterval(100);
    connect(tmrVolume, &QTimer::timeout, this, [this] {
        if (mintVolumeDirection != 0)
            NCTSliderB21->SetValue(NCTSliderB21->Value() + 3000 * mintVolumeDirection);
    });
    tmrVolume->start();
}

bool CToneEditor::LoadFile(const QString& path, Source source)
{
    mbBusy = true;
    SetFormEnabled(mWindow, false);
    imgLoading->show();
    QCoreApplication::processEvents();
    mintLoadStage = 1;
    emit StatusText(QStringLiteral("Loading. Please wait (0% complete)"));
    QCoreApplication::processEvents();

    bool loaded = false;
    try {
        AudioEditor21->OpenFile(path);
        const float seconds = MillisecondsToSeconds(AudioEditor21->SamplesToMilliseconds(AudioEditor21->TotalSamples()));
        const QString length = LengthCaption(seconds);
        lblSongLength->setText(length);
        lblToneLength->setText(length);
        SetControlTag(lblToneLength, length);
        // Nothing of the last sound's trim and selection is left standing.
        msngTrimOffset = 0;
        mbTrimmed = false;
        lblToneSize->setText(kToneSizeCleared);
        lblCurrentPosition->setText(kPositionEmpty);
        AudioEditor21->SetShowSelection(false);
        AudioEditor21->SetPlayPosition(0);
        mstrCurrentFile = path;
        msngFileLength = static_cast<float>(QFileInfo(path).size());
        loaded = true;
    } catch (const CError& e) {
        failed(e.Description(), source);
    }
    SetFormEnabled(mWindow, true);
    mbBusy = false;
    imgLoading->hide();
    return loaded;
}

void CToneEditor::failed(const QString& description, Source source)
{
    SetMousePointer(vbDefault);
    if (source == Source::Chosen && description == kFileEmptyOrDamaged) {
        // Telling of other formats would mislead: this one may be an MP3 of no use.
        CDialog().Display(QStringLiteral("This file is empty or damaged: there is no sound in it to open. "
                                         "Please choose another file."),
                          true, mWindow);
    } else {
        ShowMessageWindow(QStringLiteral("frmInvalidFileFormat"));
    }
    SetControlTag(lblToneLength, QStringLiteral("err"));
    // The user is told that no file is open: nothing of the last one may stay
    // to be played or sent. Its path stays, as it always has.
    Forget();
}

bool CToneEditor::HasSound() const
{
    return AudioEditor21->TotalSamples() > 0;
}

void CToneEditor::Forget()
{
    AudioEditor21->Clear();
    mbPlaying = false;
    mbTrimmed = false;
    msngTrimOffset = 0;
    lblSongLength->setText(kSongLengthEmpty);
    lblToneLength->setText(kToneLengthCleared);
    lblToneSize->setText(kToneSizeCleared);
    lblCurrentPosition->setText(kPositionEmpty);
}

void CToneEditor::AudioEditor21_OnEditorProgress(int percent)
{
    mbBusy = true;
    if (mintLoadStage == 1 || mintLoadStage == 2) {
        emit StatusText((mintLoadStage == 1 ? kLoadingWords : kPreparingWords) + QString::number(percent) +
                        QStringLiteral("% complete)"));
        QCoreApplication::processEvents();
    }
}

void CToneEditor::SelectionChanged()
{
    const int32_t length = AudioEditor21->SelectionEnd() - AudioEditor21->SelectionStart();
    const float seconds = MillisecondsToSeconds(AudioEditor21->SamplesToMilliseconds(length));
    if (seconds == 0)
        return;
    lblToneLength->setText(LengthCaption(seconds));
    lblToneSize->setText(ToneSizeCaption(seconds));
    PositionChanged();
}

void CToneEditor::PositionChanged()
{
    // By this order of steps the milliseconds of a thousandth of the
    // position are the position in seconds.
    const int32_t seconds = AudioEditor21->SamplesToMilliseconds(RoundToEven(AudioEditor21->PlayPosition() / 1000.0));
    lblCurrentPosition->setText(mbResetting ? kPositionEmpty : PositionCaption(seconds, msngTrimOffset));
}

bool CToneEditor::SelectionMarked() const
{
    const int32_t start = AudioEditor21->SelectionStart();
    const int32_t end = AudioEditor21->SelectionEnd();
    if ((start == 0 && end == 0) || start == end) {
        ShowMessageWindow(QStringLiteral("frmToneNotTrimmed"));
        return false;
    }
    return true;
}

void CToneEditor::Trim()
{
    if (!SelectionMarked())
        return;
    const int32_t start = AudioEditor21->SelectionStart();
    msngTrimOffset = static_cast<float>(AudioEditor21->SamplesToMilliseconds(RoundToEven(start / 1000.0)));
    AudioEditor21->ZoomToRange(start, AudioEditor21->SelectionEnd());
    PositionChanged();
    mbTrimmed = true;
}

void CToneEditor::Reset()
{
    if (mstrCurrentFile.isEmpty())
        return;
    ErrObject ignored;
    mbResetting = true;
    ResumeNext(ignored, [this] { AudioEditor21->ZoomFull(); });
    lblToneLength->setText(kToneLengthReset);
    lblToneSize->setText(kToneSizeReset);
    ResumeNext(ignored, [this] {
        AudioEditor21->SetSelectionStart(0);
        AudioEditor21->SetSelectionEnd(0);
        AudioEditor21->SetPlayPosition(0);
    });
    ResumeNext(ignored, [this] { Stop(); });
    msngTrimOffset = 0;
    mbResetting = false;
    mbTrimmed = false;
}

void CToneEditor::Play()
{
    if (!mstrCurrentFile.isEmpty() && !SoundOutputAvailable())
        return void(ShowMessageWindow(QStringLiteral("frmNoSoundOutput")));
    AudioEditor21->PreparePlay();
    AudioEditor21->Play(1);
    mbPlaying = true;
}

void CToneEditor::Stop()
{
    AudioEditor21->Stop();
    mbPlaying = false;
}

ToneMarks CToneEditor::Marks() const
{
    const ToneMarks selection{AudioEditor21->SelectionStart(), AudioEditor21->SelectionEnd()};
    if (selection.Length() != 0 || !mbTrimmed)
        return selection;
    // A click in a trimmed view leaves no marks, but the trimmed part is still what is shown.
    return {AudioEditor21->ViewStart(), AudioEditor21->ViewEnd()};
}

ToneMarks CToneEditor::MarkTrimmedPart()
{
    if (!mbTrimmed)
        return {AudioEditor21->SelectionStart(), AudioEditor21->SelectionEnd()};
    const ToneMarks view{AudioEditor21->ViewStart(), AudioEditor21->ViewEnd()};
    AudioEditor21->SetShowSelection(true);
    AudioEditor21->SetPlayPosition(view.start);
    AudioEditor21->SetSelectionStart(view.start);
    AudioEditor21->SetSelectionEnd(view.end);
    return view;
}

void CToneEditor::WriteCut(const QString& path, bool selectionOnly)
{
    mintLoadStage = 2;
    AudioEditor21->SaveToFile(path, selectionOnly, AudioEditor2::FormatMp3);
}

void CToneEditor::TakeMarks(const ToneMarks& marks, const QString& toneLength, const QString& toneSize)
{
    AudioEditor21->ZoomFull();
    AudioEditor21->SetShowSelection(true);
    AudioEditor21->SetSelectionStart(marks.start);
    AudioEditor21->SetSelectionEnd(marks.end);
    lblToneLength->setText(toneLength);
    lblToneSize->setText(toneSize);
}
