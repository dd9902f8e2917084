#include "library/frmSearching4Music.h"

#include "core/modCommon.h"
#include "library/CMusicSearch.h"
#include "skin/CClickLabel.h"
#include "skin/CPictureButton.h"
#include "skin/SkinStyle.h"

#include <QLabel>
#include <QMessageBox>
#include <QPainter>
#include <QTimer>
#include <cmath>

namespace {
constexpr int kFrames = 8;
const QSize kAnimationSize(64, 64);

// A magnifying glass circling over a note: one frame a step of the circle.
QPixmap paintFrame(int frame)
{
    QImage image(kAnimationSize, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter p(&image);
    p.setRenderHint(QPainter::Antialiasing);
    p.setPen(Qt::NoPen);
    p.setBrush(QColor(0xB9, 0xA8, 0xF0));
    p.drawEllipse(QPointF(26, 40), 8, 6);
    p.drawRect(QRectF(32, 16, 3, 24));
    const double angle = frame * 2 * M_PI / kFrames;
    const QPointF lens(32 + 14 * std::cos(angle), 32 + 14 * std::sin(angle));
    p.setBrush(Qt::NoBrush);
    p.setPen(QPen(QColor(0xFF, 0x7A, 0x59), 4));
    p.drawEllipse(lens, 10, 10);
    p.drawLine(lens + QPointF(7, 7), lens + QPointF(15, 15));
    return QPixmap::fromImage(image);
}
}  // namespace

frmSearching4Music::frmSearching4Music()
    : CSkinWindow(QStringLiteral("frmSearching4Music"))
{
    SetDraggable(true);
}

frmSearching4Music::~frmSearching4Music() = default;

void frmSearching4Music::Form_Load()
{
    SkinWindowDesc desc;
    desc.name = objectName();
    desc.size = QSize(400, 250);
    desc.heading = QStringLiteral("Looking for music");
    desc.body = QStringLiteral("Quillotone is searching your computer for music. This may take a while.");
    desc.bodyRect = QRect(28, 86, 344, 44);
    desc.buttons = {{QStringLiteral("imgCancel"), QStringLiteral("Stop"), ButtonLook::Secondary, QRect(250, 186, 120, 42)}};
    desc.labels = {
        {QStringLiteral("lblCount"), QRect(110, 144, 150, 24), LabelKind::Text, QStringLiteral("0 song(s)"), 12, true,
         Qt::AlignLeft | Qt::AlignVCenter},
        {QStringLiteral("lblCancel"), QRect(36, 196, 190, 22), LabelKind::Link, QStringLiteral("Cancel the search"), 9.5,
         false, Qt::AlignLeft | Qt::AlignVCenter},
    };
    Build(desc);

    auto* animation = new QLabel(this);
    animation->setObjectName(QStringLiteral("picSearchAnimation"));
    animation->setGeometry(QRect(QPoint(36, 124), kAnimationSize));
    animation->setAttribute(Qt::WA_TransparentForMouseEvents);
    for (int i = 0; i < kFrames; ++i)
        mFrames << paintFrame(i);
    mFrame = 0;
    animation->setPixmap(mFrames.first());

    Timer1 = new QTimer(this);
    Timer1->setObjectName(QStringLiteral("Timer1"));
    Timer1->setInterval(500);
    connect(Timer1, &QTimer::timeout, this, &frmSearching4Music::Timer1_Timer);
    Timer1->start();
    tmrAnimation = new QTimer(this);
    tmrAnimation->setObjectName(QStringLiteral("tmrAnimation"));
    tmrAnimation->setInterval(400);
    connect(tmrAnimation, &QTimer::timeout, this, &frmSearching4Music::tmrAnimation_Timer);
    tmrAnimation->start();

    connect(Button(QStringLiteral("imgCancel")), &CPictureButton::Released, this, &frmSearching4Music::imgCancel_Released);
    connect(findChild<CClickLabel*>(QStringLiteral("lblCancel")), &CClickLabel::Click, this,
            &frmSearching4Music::lblCancel_Click);
    PrepareDialog(this);
}

void frmSearching4Music::Timer1_Timer()
{
    Timer1->stop();
    mobjSearch = std::make_unique<CMusicSearch>();
    connect(mobjSearch.get(), &CMusicSearch::FileCount, this,
            [this](const QString& CountString) { Label(QStringLiteral("lblCount"))->setText(CountString); });
    mobjSearch->Start(1);
    mobjSearch.reset();
    Unload();
}

void frmSearching4Music::tmrAnimation_Timer()
{
    mFrame = (mFrame + 1) % kFrames;
    Label(QStringLiteral("picSearchAnimation"))->setPixmap(mFrames[mFrame]);
}

void frmSearching4Music::imgCancel_Released()
{
    cancel();
}

void frmSearching4Music::lblCancel_Click()
{
    QMessageBox ask(QMessageBox::Question, QString(), QStringLiteral("Cancel the search for music on your computer?"),
                    QMessageBox::Yes | QMessageBox::No, this);
    ask.setObjectName(QStringLiteral("MsgBox"));
    if (ask.exec() == QMessageBox::Yes)
        cancel();
}

void frmSearching4Music::cancel()
{
    if (mobjSearch) {
        mobjSearch->CancelTheSearch();
        return;
    }
    // Cancelled before the search began: it never starts.
    if (Timer1 && Timer1->isActive()) {
        Timer1->stop();
        Unload();
    }
}
