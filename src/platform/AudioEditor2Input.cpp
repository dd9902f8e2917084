// The editor's keys, wheel, pointer and context menu.
#include "platform/AudioEditor2.h"

#include <QAction>
#include <QContextMenuEvent>
#include <QMenu>
#include <QMouseEvent>
#include <QWheelEvent>
#include <algorithm>
#include <cmath>

namespace {
constexpr int kDragPixels = 3;
constexpr int kGripPixels = 4;        // either side of a mark's line
constexpr double kKeyZoom = 0.5;      // + halves the span on show, - doubles it
constexpr double kNotchZoom = 0.8;    // one notch of the wheel
constexpr int64_t kNarrowestView = 64;

bool marked(int32_t start, int32_t end) { return start != end; }
}  // namespace

void AudioEditor2::buildActions()
{
    mMenu = new QMenu(this);
    mMenu->setObjectName(QStringLiteral("mnuEditor"));
    // Each entry shows its key; the keys themselves are read in keyPressEvent,
    // so that they work whenever the editor has the focus.
    const auto entry = [this](const char* text, QList<QKeySequence> keys, auto handler) {
        QAction* action = mMenu->addAction(QString::fromUtf8(text));
        action->setShortcuts(keys);
        action->setShortcutContext(Qt::WidgetShortcut);
        connect(action, &QAction::triggered, this, handler);
    };
    entry("Play or stop", {Qt::Key_Space}, [this] { emit PlayStopWanted(); });
    entry("Go to the start", {Qt::Key_Home}, [this] { SetPlayPosition(mViewStart); });
    entry("Go to the end", {Qt::Key_End}, [this] { SetPlayPosition(mViewEnd); });
    entry("Zoom in", {Qt::Key_Plus, Qt::Key_Equal}, [this] { zoomAroundMarks(kKeyZoom); });
    entry("Zoom out", {Qt::Key_Minus, Qt::Key_Underscore}, [this] { zoomAroundMarks(1 / kKeyZoom); });
    mMenu->addSeparator();
    entry("Nearer mark 0.1 s earlier", {Qt::Key_Left}, [this] { nudgeMark(-0.1); });
    entry("Nearer mark 0.1 s later", {Qt::Key_Right}, [this] { nudgeMark(0.1); });
    entry("Nearer mark 1 s earlier", {Qt::SHIFT | Qt::Key_Left}, [this] { nudgeMark(-1); });
    entry("Nearer mark 1 s later", {Qt::SHIFT | Qt::Key_Right}, [this] { nudgeMark(1); });
    mMenu->addSeparator();
    entry("Find the best part", {}, [this] { emit BestPartWanted(); });
    entry("Hear it as the phone will", {}, [this] { emit HearAsPhoneWanted(); });
}

void AudioEditor2::contextMenuEvent(QContextMenuEvent* event)
{
    const bool sound = TotalSamples() > 0;
    for (QAction* action : mMenu->actions())
        action->setEnabled(sound);
    mMenu->popup(event->globalPos());
}

// Enter is the editor's, so that it never reaches a window's default button;
// the editor's own keys are not taken by a shortcut of the window.
bool AudioEditor2::event(QEvent* event)
{
    if (event->type() == QEvent::ShortcutOverride) {
        const auto* key = static_cast<QKeyEvent*>(event);
        const QKeyCombination pressed(key->modifiers() & ~Qt::KeypadModifier, Qt::Key(key->key()));
        bool ours = key->key() == Qt::Key_Return || key->key() == Qt::Key_Enter;
        for (const QAction* action : mMenu->actions())
            ours = ours || action->shortcuts().contains(QKeySequence(pressed));
        if (ours) {
            event->accept();
            return true;
        }
    }
    return QWidget::event(event);
}

void AudioEditor2::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) {
        event->accept();
        return;
    }
    const QKeySequence pressed(QKeyCombination(event->modifiers() & ~Qt::KeypadModifier, Qt::Key(event->key())));
    for (QAction* action : mMenu->actions()) {
        if (action->shortcuts().contains(pressed)) {
            if (TotalSamples() > 0) {
                action->setEnabled(true);  // a menu shown with no sound left it off
                action->trigger();
            }
            event->accept();
            return;
        }
    }
    QWidget::keyPressEvent(event);
}

void AudioEditor2::wheelEvent(QWheelEvent* event)
{
    const int delta = event->angleDelta().y();
    if (delta == 0 || TotalSamples() == 0) {
        event->ignore();
        return;
    }
    // Up narrows the view, down widens it; the sound under the pointer stays
    // put. A touchpad's small steps zoom a little each.
    ZoomAround(sampleAt(static_cast<int>(event->position().x())), std::pow(kNotchZoom, delta / 120.0));
    event->accept();
}

void AudioEditor2::ZoomAround(int64_t sample, double factor)
{
    const int64_t total = TotalSamples();
    const int64_t span = static_cast<int64_t>(mShowEnd) - mShowStart;
    if (total == 0 || span <= 0)
        return;
    const int64_t narrowest = std::min<int64_t>(total, std::max<int64_t>(kNarrowestView, width()));
    const int64_t wider = std::clamp<int64_t>(std::llround(span * factor), narrowest, total);
    const double place = std::clamp(static_cast<double>(sample - mShowStart) / span, 0.0, 1.0);
    const int64_t start = std::clamp<int64_t>(sample - std::llround(place * wider), 0, total - wider);
    mShowStart = static_cast<int32_t>(start);
    mShowEnd = static_cast<int32_t>(start + wider);
    update();
}

// The marks' middle comes to the middle of the view; with nothing marked, the cursor.
void AudioEditor2::zoomAroundMarks(double factor)
{
    const int64_t centre = marked(mSelStart, mSelEnd) ? (int64_t(mSelStart) + mSelEnd) / 2 : mPlayPosition;
    const int64_t span = static_cast<int64_t>(mShowEnd) - mShowStart;
    mShowStart = clampSample(centre - span / 2);
    mShowEnd = clampSample(int64_t(mShowStart) + span);
    ZoomAround(centre, factor);
}

// The mark nearer to the pointer over the wave, or else to the cursor.
int32_t& AudioEditor2::nearerMark()
{
    const int64_t near = mHoverX >= 0 ? sampleAt(mHoverX) : mPlayPosition;
    return std::abs(near - mSelStart) <= std::abs(near - mSelEnd) ? mSelStart : mSelEnd;
}

void AudioEditor2::nudgeMark(double seconds)
{
    const auto step = static_cast<int64_t>(std::llround(seconds * mRate));
    if (!marked(mSelStart, mSelEnd)) {  // nothing marked: the cursor moves
        SetPlayPosition(clampSample(int64_t(mPlayPosition) + step));
        return;
    }
    int32_t& mark = nearerMark();
    const bool start = &mark == &mSelStart;
    const int32_t moved = clampSample(int64_t(mark) + step);
    setMarks(start ? moved : mSelStart, start ? mSelEnd : moved, mSnap);
}

void AudioEditor2::MarkPart(int32_t start, int32_t end)
{
    mShowSelection = true;
    setMarks(start, end, mSnap);
}

// The user's marks: in order, snapped when asked, and told at once.
void AudioEditor2::setMarks(int32_t start, int32_t end, bool snap)
{
    start = clampSample(start);
    end = clampSample(end);
    if (end < start)
        std::swap(start, end);
    if (snap && start != end) {
        const int32_t a = SnappedToZero(start), b = SnappedToZero(end);
        if (a < b) {
            start = a;
            end = b;
        }
    }
    mSelStart = start;
    mSelEnd = end;
    emit OnEditorSelectionChanged();
    update();
}

AudioEditor2::Grip AudioEditor2::gripAt(int x) const
{
    if (!mShowSelection || !marked(mSelStart, mSelEnd))
        return Grip::None;
    const int toStart = std::abs(x - xOf(mSelStart)), toEnd = std::abs(x - xOf(mSelEnd));
    if (std::min(toStart, toEnd) > kGripPixels)
        return Grip::None;
    return toStart <= toEnd ? Grip::Start : Grip::End;
}

void AudioEditor2::mousePressEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton || TotalSamples() == 0)
        return;
    setFocus(Qt::MouseFocusReason);
    mPressX = event->position().toPoint().x();
    mAnchor = sampleAt(mPressX);
    mGrip = gripAt(mPressX);
    mDragging = false;
}

void AudioEditor2::mouseMoveEvent(QMouseEvent* event)
{
    emit OnEditorMouseMove();
    const int x = event->position().toPoint().x();
    mHoverX = x;
    if (!(event->buttons() & Qt::LeftButton) || mPressX < 0) {
        setCursor(gripAt(x) == Grip::None ? Qt::ArrowCursor : Qt::SizeHorCursor);
        return;
    }
    if (!mDragging && std::abs(x - mPressX) < kDragPixels)
        return;
    mDragging = true;
    const int32_t here = sampleAt(x);
    if (mGrip != Grip::None) {
        // Just this mark moves; passing the other, it becomes the other end.
        const int32_t other = mGrip == Grip::Start ? mSelEnd : mSelStart;
        mGrip = here <= other ? Grip::Start : Grip::End;
        mSelStart = std::min(here, other);
        mSelEnd = std::max(here, other);
    } else {
        mSelStart = std::min(mAnchor, here);
        mSelEnd = std::max(mAnchor, here);
    }
    mShowSelection = true;
    emit OnEditorSelectionChanged();
    update();
}

void AudioEditor2::mouseReleaseEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton || mPressX < 0)
        return;
    mPressX = -1;
    mGrip = Grip::None;
    if (mDragging) {
        // The marks land on silence, unless Alt says where exactly.
        if (mSnap && !(event->modifiers() & Qt::AltModifier) && marked(mSelStart, mSelEnd))
            setMarks(mSelStart, mSelEnd, true);
        return;
    }
    // A click places the play cursor and lets go of the marks.
    if (mSelStart != 0 || mSelEnd != 0) {
        mSelStart = mSelEnd = 0;
        emit OnEditorSelectionChanged();
    }
    SetPlayPosition(mAnchor);
}

void AudioEditor2::leaveEvent(QEvent* event)
{
    mHoverX = -1;
    QWidget::leaveEvent(event);
}

void AudioEditor2::focusInEvent(QFocusEvent* event)
{
    update();
    QWidget::focusInEvent(event);
}

void AudioEditor2::focusOutEvent(QFocusEvent* event)
{
    update();
    QWidget::focusOutEvent(event);
}
