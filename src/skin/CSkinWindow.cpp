#include "skin/CSkinWindow.h"

#include "core/twips.h"
#include "skin/CClickLabel.h"
#include "skin/CPictureButton.h"
#include "skin/SkinStyle.h"
#include "skin/modWindowDrag.h"

#include <QCloseEvent>
#include <QKeyEvent>
#include <QLineEdit>
#include <QMouseEvent>
#include <QPainter>
#include <QPlainTextEdit>
#include <QRegularExpressionValidator>
#include <QTimer>

namespace {
QString fieldStyle()
{
    return QStringLiteral("background: %1; color: %2; border: 1px solid #B9A8F0; border-radius: 8px; padding: 4px 6px;")
        .arg(skin::FieldColour().name(), skin::TextColour().name());
}
}  // namespace

CSkinWindow::CSkinWindow(const QString& name, Qt::WindowFlags flags)
    : QDialog(nullptr, flags | Qt::FramelessWindowHint)
{
    setObjectName(name);
    setMouseTracking(true);
    setWindowIcon(skin::AppIcon());
    setWindowTitle(QStringLiteral("Quillotone"));
    // Invisible to people; lets a script that drives the program from outside
    // tell the windows apart by name.
    setWindowRole(name);
}

void CSkinWindow::Load()
{
    if (mLoaded)
        return;
    mLoaded = true;
    Tag.clear();
    Form_Load();
}

void CSkinWindow::Show(bool modal)
{
    Load();
    if (modal) {
        exec();
        return;
    }
    show();
    raise();
    activateWindow();
}

void CSkinWindow::Hide()
{
    hide();
}

void CSkinWindow::Unload()
{
    hide();
    if (!mLoaded)
        return;
    mLoaded = false;
    // Controls are taken off at once and deleted later: the control whose
    // handler unloads the window is still running.
    const QObjectList controls = children();
    for (QObject* control : controls) {
        if (auto* widget = qobject_cast<QWidget*>(control))
            widget->hide();
        if (auto* timer = qobject_cast<QTimer*>(control))
            timer->stop();
        control->setParent(nullptr);
        control->deleteLater();
    }
    mFace = QPixmap();
    clearMask();
    mDragging = mBodyPressed = false;
}

CPictureButton* CSkinWindow::Button(const QString& name) const
{
    return findChild<CPictureButton*>(name);
}

QLabel* CSkinWindow::Label(const QString& name) const
{
    return findChild<QLabel*>(name);
}

void CSkinWindow::SetFace(const QImage& face)
{
    mFace = QPixmap::fromImage(face);
    setFixedSize(mFace.size());
    update();
}

void CSkinWindow::Build(const SkinWindowDesc& description)
{
    const SkinWindowDesc desc = skin::LaidOut(description);
    SetFace(skin::PaintFace(desc));

    for (const SkinTextBox& t : desc.textBoxes) {
        QWidget* box = nullptr;
        if (t.multiLine) {
            auto* edit = new QPlainTextEdit(this);
            edit->setReadOnly(t.readOnly);
            box = edit;
        } else {
            auto* edit = new QLineEdit(this);
            edit->setReadOnly(t.readOnly);
            if (t.digitsOnly)
                edit->setValidator(new QRegularExpressionValidator(QRegularExpression(QStringLiteral("[0-9]*")), edit));
            box = edit;
        }
        box->setObjectName(t.name);
        box->setGeometry(t.rect);
        box->setFont(skin::Font(10));
        box->setStyleSheet(fieldStyle());
        // A read-only box leaves the keys to the window (Enter and Esc).
        if (t.readOnly)
            box->setFocusPolicy(Qt::NoFocus);
    }
    for (const SkinLabel& l : desc.labels) {
        QLabel* label = nullptr;
        if (l.kind == LabelKind::Text) {
            label = new QLabel(this);
            label->setObjectName(l.name);
            label->setAttribute(Qt::WA_TransparentForMouseEvents);
        } else {
            label = new CClickLabel(l.name, this, l.kind == LabelKind::Link ? CClickLabel::Link : CClickLabel::HotSpot);
        }
        label->setGeometry(l.rect);
        label->setText(l.text);
        label->setFont(skin::Font(l.pointSize, l.bold));
        label->setAlignment(Qt::Alignment(l.alignment));
        label->setWordWrap(true);
        QPalette palette = label->palette();
        palette.setColor(QPalette::WindowText, l.kind == LabelKind::Link ? skin::HeadingColour() : skin::TextColour());
        label->setPalette(palette);
    }
    for (const SkinButton& b : desc.buttons) {
        new CPictureButton(b.name, this, b.rect, skin::PaintButton(b, skin::ButtonState::Over),
                           skin::PaintButton(b, skin::ButtonState::Clicked));
    }
    if (desc.talkingToServer) {
        // Over the button row, so a busy window shows no buttons to press.
        const QSize size(260, 44);
        auto* busy = new QLabel(this);
        busy->setObjectName(QStringLiteral("imgTalkingToServer"));
        busy->setPixmap(skin::PaintTalkingToServer(size));
        busy->setGeometry(QRect(QPoint((width() - size.width()) / 2, height() - size.height() - 14), size));
        busy->hide();
    }
    if (desc.minimizeMark)
        new CClickLabel(QStringLiteral("lblMinimize"), this);
    if (desc.closeMark)
        new CClickLabel(QStringLiteral("lblClose"), this);
    if (auto* mark = findChild<QLabel*>(QStringLiteral("lblMinimize")))
        mark->setGeometry(skin::MinimizeMarkRect(width()));
    if (auto* mark = findChild<QLabel*>(QStringLiteral("lblClose")))
        mark->setGeometry(skin::CloseMarkRect(width()));
}

void CSkinWindow::Form_KeyDown(int) {}

void CSkinWindow::paintEvent(QPaintEvent*)
{
    if (mFace.isNull())
        return;
    QPainter p(this);
    p.drawPixmap(0, 0, mFace);
}

void CSkinWindow::mousePressEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton)
        return;
    mBodyPressed = true;
    if (DragAllowed()) {
        mDragging = true;
        const QPointF at = event->position();
        DragStart(this, at.x() * TwipsPerPixelX(screen()), at.y() * TwipsPerPixelY(screen()));
    }
}

void CSkinWindow::mouseMoveEvent(QMouseEvent* event)
{
    ResetButtonPictures(this);
    // The busy test holds for the whole drag: a window that became busy stays put.
    if (mDragging && (event->buttons() & Qt::LeftButton) && DragAllowed()) {
        const QPointF at = event->position();
        DragMove(this, at.x() * TwipsPerPixelX(screen()), at.y() * TwipsPerPixelY(screen()));
    }
}

void CSkinWindow::mouseReleaseEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton)
        return;
    if (mDragging) {
        mDragging = false;
        const QPointF at = event->position();
        if (DragAllowed())
            DragEnd(this, at.x() * TwipsPerPixelX(screen()), at.y() * TwipsPerPixelY(screen()));
        else
            DragCancel(this);
    }
    const bool click = mBodyPressed && rect().contains(event->position().toPoint());
    mBodyPressed = false;
    if (click)
        Form_Click();
}

void CSkinWindow::leaveEvent(QEvent* event)
{
    // Leaving the window over a button's edge would otherwise leave it lit.
    ResetButtonPictures(this);
    QDialog::leaveEvent(event);
}

void CSkinWindow::keyPressEvent(QKeyEvent* event)
{
    // Enter and Esc mean only what the window says; the dialog's own meanings are off.
    const int key = event->key() == Qt::Key_Enter ? int(Qt::Key_Return) : event->key();
    Form_KeyDown(key);
    event->accept();
}

void CSkinWindow::closeEvent(QCloseEvent* event)
{
    // A skinned window has no close command; a request from the desktop
    // (a key chord, the window manager) is not an answer.
    if (event->spontaneous()) {
        event->ignore();
        return;
    }
    QDialog::closeEvent(event);
}
