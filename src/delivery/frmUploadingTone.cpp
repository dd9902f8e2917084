#include "delivery/frmUploadingTone.h"

#include "core/modCommon.h"
#include "skin/SkinStyle.h"

#include <QLabel>
#include <QPainter>
#include <QTimer>

namespace {
constexpr int kFrames = 5;
const QSize kPictureSize(150, 24);

// One frame: five notes in a row, the frame's own one lifted and lit.
QPixmap paintFrame(int frame)
{
    QImage image(kPictureSize, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter p(&image);
    p.setRenderHint(QPainter::Antialiasing);
    for (int i = 0; i < kFrames; ++i) {
        const bool lit = i == frame;
        const QPointF centre(15 + i * 30, lit ? 9 : 14);
        p.setPen(Qt::NoPen);
        p.setBrush(lit ? QColor(0xFF, 0x7A, 0x59) : QColor(0xB9, 0xA8, 0xF0));
        p.drawEllipse(centre, lit ? 8.0 : 6.0, lit ? 8.0 : 6.0);
    }
    return QPixmap::fromImage(image);
}
}  // namespace

frmUploadingTone::frmUploadingTone()
    : CSkinWindow(QStringLiteral("frmUploadingTone"))
{
}

void frmUploadingTone::Form_Load()
{
    SkinWindowDesc desc;
    desc.name = objectName();
    desc.size = QSize(400, 230);
    desc.heading = QStringLiteral("Sending your tone");
    desc.bodyRect = QRect(28, 90, 344, 30);
    desc.labels = {{QStringLiteral("lblMessage"), QRect(28, 124, 344, 44), LabelKind::Text,
                    QStringLiteral("Your tone is on its way to the Quillotone service. This can take a few moments."),
                    10, false, Qt::AlignHCenter | Qt::AlignTop}};
    Build(desc);

    auto* animation = new QLabel(this);
    animation->setObjectName(QStringLiteral("picAnimation"));
    animation->setGeometry(QRect(QPoint((width() - kPictureSize.width()) / 2, 176), kPictureSize));
    for (int i = 0; i < kFrames; ++i) {
        auto* frame = new QLabel(this);
        frame->setObjectName(QStringLiteral("picRippingAnimation%1").arg(i));
        frame->setPixmap(paintFrame(i));
        frame->hide();
        picRippingAnimation << frame;
    }
    animation->setPixmap(picRippingAnimation.first()->pixmap());

    tmrAnimation = new QTimer(this);
    tmrAnimation->setObjectName(QStringLiteral("tmrAnimation"));
    tmrAnimation->setInterval(400);
    connect(tmrAnimation, &QTimer::timeout, this, &frmUploadingTone::tmrAnimation_Timer);
    tmrAnimation->start();

    CenterOnMainWindow(this);
    SetLayeredColourKey(this, kColourKeyBlue, 100, LWA_COLORKEY);
}

void frmUploadingTone::tmrAnimation_Timer()
{
    Label(QStringLiteral("picAnimation"))->setPixmap(picRippingAnimation[mintFrame]->pixmap());
    if (++mintFrame == kFrames)
        mintFrame = 0;
}

void frmUploadingTone::Form_KeyDown(int key)
{
    if (key == Qt::Key_Return || key == Qt::Key_Escape)
        Hide();
}

void frmUploadingTone::Form_Click()
{
    Hide();
}

frmUploadingTone& UploadingToneWindow(QWidget* frmMain)
{
    auto* window = frmMain->findChild<frmUploadingTone*>(QStringLiteral("frmUploadingTone"), Qt::FindDirectChildrenOnly);
    if (!window) {
        window = new frmUploadingTone;
        window->setParent(frmMain, window->windowFlags());
    }
    return *window;
}
