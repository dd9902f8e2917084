#include "cd/frmRipCD.h"

#include "cd/CDManager.h"
#include "cd/frmRipping.h"
#include "core/CError.h"
#include "core/MsgBox.h"
#include "core/modCommon.h"
#include "core/MainWindow.h"
#include "core/twips.h"
#include "platform/SoundOutput.h"
#include "skin/CClickLabel.h"
#include "skin/CPictureButton.h"
#include "skin/SkinStyle.h"
#include "skin/frmMessage.h"

#include <QCoreApplication>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLineEdit>
#include <QPointer>
#include <QThread>
#include <QTimer>
#include <QTreeWidget>

namespace {
constexpr int kNameColumnTwips = 3100;
constexpr int kLengthColumnTwips = 740;
constexpr int kUp = 1;
constexpr int kDown = 2;

QPointer<frmMessage>& waitWindow()
{
    static QPointer<frmMessage> window;
    return window;
}

SkinLabel link(const char* name, const char* caption, QRect rect)
{
    return {QString::fromLatin1(name), rect, LabelKind::Link, QString::fromUtf8(caption), 9, false,
            Qt::AlignLeft | Qt::AlignVCenter};
}
}  // namespace

void ShowCCDBWait()
{
    if (!waitWindow()) {
        QWidget* main = MainWindow();
        waitWindow() = MessageWindow(QStringLiteral("frmCCDBWait")).release();
        if (main)
            waitWindow()->setParent(main, waitWindow()->windowFlags());
    }
    waitWindow()->Load();
    CenterOnMainWindow(waitWindow());
    waitWindow()->Show(false);
    QCoreApplication::processEvents();
}

void HideCCDBWait()
{
    if (waitWindow())
        waitWindow()->Hide();
}

frmRipCD::frmRipCD() : CSkinWindow(QStringLiteral("frmRipCD")) {}

void frmRipCD::buildControls()
{
    const int listWidth = TwipsToPixelsX(kNameColumnTwips + kLengthColumnTwips) + 4;
    SkinWindowDesc desc;
    desc.name = objectName();
    desc.size = QSize(listWidth + 100, 430);
    desc.heading = QStringLiteral("Pick a track from your CD");
    desc.bodyRect = QRect(0, 0, 1, 1);  // the list and the title carry the wording
    desc.closeMark = true;
    const int left = 28;
    desc.textBoxes = {{QStringLiteral("txtCDTitle"), QRect(left, 74, listWidth, 30)}};
    desc.labels = {
        {QStringLiteral("lblCurrentPlayTime"), QRect(left, 286, 90, 24), LabelKind::Text, QStringLiteral("00m 00s"),
         10, true, Qt::AlignLeft | Qt::AlignVCenter},
        link("lblUp", "\u25B2", QRect(left + listWidth + 10, 112, 24, 24)),
        link("lblDown", "\u25BC", QRect(left + listWidth + 10, 250, 24, 24)),
        link("lblFreeDBWrong", "Names wrong?", QRect(left, 380, 110, 24)),
        link("lblURL", "Where do they come from?", QRect(left + 116, 380, 200, 24)),
    };
    desc.buttons = {
        PlacedButton("cmdPrev", "Prev", QRect(left + 100, 282, 60, 32)),
        PlacedButton("cmdPlay", "Play", QRect(left + 164, 282, 60, 32)),
        PlacedButton("cmdStop", "Stop", QRect(left + 228, 282, 60, 32)),
        PlacedButton("cmdNext", "Next", QRect(left + 292, 282, 60, 32)),
        PlacedButton("cmdRipIt", "Rip it", QRect(left + listWidth - 190, 330, 100, 38), ButtonLook::Primary),
        PlacedButton("cmdCancel", "Cancel", QRect(left + listWidth - 84, 330, 84, 38)),
    };
    Build(desc);
    // The painted close mark is this window's lblQuit.
    if (QLabel* quit = Label(QStringLiteral("lblClose")))
        quit->setObjectName(QStringLiteral("lblQuit"));

    lvwTracks = new QTreeWidget(this);
    lvwTracks->setObjectName(QStringLiteral("lvwTracks"));
    lvwTracks->setGeometry(left, 112, listWidth, 160);
    lvwTracks->setFont(skin::Font(9.75));
    lvwTracks->installEventFilter(this);

    Timer1 = new QTimer(this);
    Timer1->setObjectName(QStringLiteral("Timer1"));
    Timer1->setInterval(150);
    connect(Timer1, &QTimer::timeout, this, &frmRipCD::Timer1_Timer);
    Timer1->start();

    auto released = [this](const char* name, auto handler) {
        connect(Button(QString::fromLatin1(name)), &CPictureButton::Released, this, handler);
    };
    released("cmdPlay", [this] { Playing(); });
    released("cmdStop", [this] { StopTrack(); });
    released("cmdPrev", [this] { cmdPrevNext(kUp); });
    released("cmdNext", [this] { cmdPrevNext(kDown); });
    released("cmdRipIt", [this] { cmdRipIt_Released(); });
    released("cmdCancel", [this] { Leave(); });
    auto* quit = findChild<CClickLabel*>(QStringLiteral("lblQuit"));
    connect(quit, &CClickLabel::Click, this, &frmRipCD::Leave);
    for (const auto& [name, direction] : {std::pair{"lblUp", kUp}, std::pair{"lblDown", kDown}}) {
        auto* scroll = findChild<CClickLabel*>(QString::fromLatin1(name));
        const int d = direction;
        connect(scroll, &CClickLabel::MouseDown, this, [this, d] { mintScrollDirection = static_cast<int16_t>(d); });
        connect(scroll, &CClickLabel::MouseUp, this, [this] { mintScrollDirection = 0; });
        connect(scroll, &CClickLabel::Click, this, [this, d] { ScrollOneStep(d); });
    }
    connect(findChild<CClickLabel*>(QStringLiteral("lblFreeDBWrong")), &CClickLabel::Click, this,
            &frmRipCD::showFreeDBWrong);
    connect(findChild<CClickLabel*>(QStringLiteral("lblURL")), &CClickLabel::Click, this, &frmRipCD::showFreeDBWrong);
    connect(lvwTracks, &QTreeWidget::itemDoubleClicked, this, [this] {
        StopTrack();
        Playing();
    });
}

void frmRipCD::Form_Load()
{
    try {
        ShowCCDBWait();
        buildControls();
        mobjCDManager = TheCDManager();
        connect(mobjCDManager, &CDManager::CDTrackTimer, this, &frmRipCD::mobjCDManager_CDTrackTimer);
        QCoreApplication::processEvents();
        lvwTracks->setColumnCount(2);
        lvwTracks->setHeaderHidden(true);
        lvwTracks->setRootIsDecorated(false);
        lvwTracks->setColumnWidth(0, TwipsToPixelsX(kNameColumnTwips));
        lvwTracks->setColumnWidth(1, TwipsToPixelsX(kLengthColumnTwips));
        mintRipTrackPlusOne = -1;
        mobjCDManager->LoadTracks();
        fillList();
        // A disc known by its artist alone shows no names.
        if (!mobjCDManager->CDTitle().isEmpty()) {
            QString title = mobjCDManager->CDTitle();
            if (!mobjCDManager->CDArtist().isEmpty())
                title += QStringLiteral(", ") + mobjCDManager->CDArtist();
            findChild<QLineEdit*>(QStringLiteral("txtCDTitle"))->setText(title);
        }
        HideCCDBWait();
        CenterOnMainWindow(this);
        SetLayeredColourKey(this, kColourKeyBlue, 100, LWA_COLORKEY);
    } catch (const CError& e) {
        MsgBox(e.Description());
    }
}

void frmRipCD::fillList()
{
    lvwTracks->clear();
    for (const CDTrack& track : mobjCDManager->Tracks()) {
        auto* row = new QTreeWidgetItem(lvwTracks);
        row->setText(0, QString::number(track.SessionInd + 1) + QStringLiteral(": ") + track.TrackName);
        row->setText(1, track.duration);
        row->setData(0, Qt::UserRole, track.SessionInd);
    }
}

QString frmRipCD::SelectedTrackText() const
{
    QTreeWidgetItem* row = lvwTracks ? lvwTracks->currentItem() : nullptr;
    return row ? row->text(0) : QString();
}

void frmRipCD::setBold(int row, bool bold)
{
    QTreeWidgetItem* item = lvwTracks->topLevelItem(row);
    for (int column = 0; column < 2; ++column) {
        QFont font = item->font(column);
        font.setBold(bold);
        item->setFont(column, font);
    }
}

void frmRipCD::Playing()
{
    const int selected = lvwTracks->currentItem() ? lvwTracks->indexOfTopLevelItem(lvwTracks->currentItem()) : -1;
    if (mbPlaying && selected == mintPlayingIndex)
        return;
    StopTrack();
    lvwTracks->viewport()->update();
    if (selected < 0)
        return;
    if (!SoundOutputAvailable())
        return void(ShowMessageWindow(QStringLiteral("frmNoSoundOutput")));
    setBold(selected, true);
    mobjCDManager->PlaySelectedTrack(static_cast<int16_t>(lvwTracks->currentItem()->data(0, Qt::UserRole).toInt()));
    mintPlayingIndex = static_cast<int16_t>(selected);
    mbPlaying = true;
    lvwTracks->viewport()->update();
}

void frmRipCD::StopTrack()
{
    for (int row = 0; row < lvwTracks->topLevelItemCount(); ++row)
        setBold(row, false);
    mobjCDManager->StopPlaying();
    QThread::msleep(100);
    mbPlaying = false;
}

void frmRipCD::ScrollOneStep(int direction)
{
    QTreeWidgetItem* row = lvwTracks->currentItem();
    if (!row || direction == 0)
        return;
    const int at = lvwTracks->indexOfTopLevelItem(row);
    const int to = direction == kUp ? at - 1 : at + 1;
    if (to < 0 || to >= lvwTracks->topLevelItemCount())
        return;
    lvwTracks->setCurrentItem(lvwTracks->topLevelItem(to));
    lvwTracks->scrollToItem(lvwTracks->currentItem());
}

void frmRipCD::cmdPrevNext(int direction)
{
    mintScrollDirection = static_cast<int16_t>(direction);
    ScrollOneStep(direction);
    mintScrollDirection = 0;
    if (mbPlaying)
        Playing();
}

bool frmRipCD::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == lvwTracks && event->type() == QEvent::KeyPress) {
        const int key = static_cast<QKeyEvent*>(event)->key();
        if (key == Qt::Key_Return || key == Qt::Key_Enter) {
            Playing();
            return true;
        }
    }
    return CSkinWindow::eventFilter(watched, event);
}

void frmRipCD::cmdRipIt_Released()
{
    if (mbPlaying)
        StopTrack();
    QTreeWidgetItem* row = lvwTracks->currentItem();
    if (!row)
        return;
    mintRipTrackPlusOne = static_cast<int16_t>(row->data(0, Qt::UserRole).toInt() + 1);
    mobjCDManager->CleanUp();  // the rip's own grabber needs the drive
    auto ripping = std::make_unique<frmRipping>();
    ripping->Load();
    ripping->RipTrackIndex = static_cast<int16_t>(mintRipTrackPlusOne - 1);
    ripping->tmrStartRip->start();
    ripping->Show(true);
    Tag = ripping->Tag;
    ripping->Unload();
    ripping.reset();
    Hide();
}

void frmRipCD::Leave()
{
    if (mbPlaying)
        StopTrack();
    mobjCDManager->CleanUp();
    if (mbPlaying)
        StopTrack();
    Tag.clear();
    Hide();
    HideCCDBWait();
}

void frmRipCD::showFreeDBWrong()
{
    ShowMessageWindow(QStringLiteral("frmFreeDBWrong"));
}

void frmRipCD::mobjCDManager_CDTrackTimer(const QString& ElapsedTime)
{
    Label(QStringLiteral("lblCurrentPlayTime"))->setText(ElapsedTime);
}
