#include "library/frmMyMusic2.h"

#include "core/CError.h"
#include "core/MainWindow.h"
#include "core/globals.h"
#include "core/modCommon.h"
#include "core/numbers.h"
#include "core/twips.h"
#include "library/CAudioPlayer.h"
#include "library/LibraryFile.h"
#include "library/frmSearching4Music.h"
#include "library/modTreeView.h"
#include "platform/SoundOutput.h"
#include "skin/CClickLabel.h"
#include "skin/CPictureButton.h"
#include "skin/SkinStyle.h"
#include "skin/frmMessage.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QHeaderView>
#include <QKeyEvent>
#include <QPainter>
#include <QScopedValueRollback>
#include <QSet>
#include <QSplitter>
#include <QThread>
#include <QTreeWidget>
#include <QWindow>

namespace {
constexpr int kKeyRole = Qt::UserRole;
constexpr int kTagRole = Qt::UserRole + 1;
const QSize kStartSize(720, 470);
constexpr int kMargin = 16;
constexpr int kListTop = 100;
constexpr int kFootHeight = 42;
const QSize kOptionSize(116, 22);
const QString kRootKey = QStringLiteral("Root");

// The face for a size: the buttons stand in the foot, the song controls on
// the left, the ways out on the right.
SkinWindowDesc face(QSize size)
{
    SkinWindowDesc d;
    d.name = QStringLiteral("frmMyMusic2");
    d.size = size;
    d.heading = QStringLiteral("My Music");
    d.bodyRect = QRect(0, 0, 1, 1);  // no painted wording
    d.closeMark = true;
    struct Foot {
        const char* name;
        const char* caption;
        int width;
        ButtonLook look;
    };
    static const Foot songs[] = {{"cmdPrev", "Prev", 58, ButtonLook::Secondary},
                                 {"cmdPlay", "Play", 58, ButtonLook::Secondary},
                                 {"cmdStop", "Stop", 58, ButtonLook::Secondary},
                                 {"cmdNext", "Next", 58, ButtonLook::Secondary}};
    static const Foot ways[] = {{"imgGrab", "Use song", 120, ButtonLook::Primary},
                                {"imgCancel", "Cancel", 96, ButtonLook::Secondary},
                                {"imgSearch", "Search", 96, ButtonLook::Secondary}};
    const int y = size.height() - kFootHeight - 12;
    int x = kMargin;
    for (const Foot& b : songs) {
        d.buttons << SkinButton{QString::fromLatin1(b.name), QString::fromLatin1(b.caption), b.look, QRect(x, y, b.width, kFootHeight)};
        x += b.width + 6;
    }
    int right = size.width() - kMargin;
    for (const Foot& b : ways) {
        right -= b.width;
        d.buttons << SkinButton{QString::fromLatin1(b.name), QString::fromLatin1(b.caption), b.look, QRect(right, y, b.width, kFootHeight)};
        right -= 12;
    }
    return d;
}

// An option picture: a round mark and its words; the checked twin fills the mark.
QPixmap optionPicture(const QString& words, bool checked)
{
    QImage image(kOptionSize, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter p(&image);
    p.setRenderHints(QPainter::Antialiasing | QPainter::TextAntialiasing);
    p.setPen(QPen(skin::HeadingColour(), 1.6));
    p.setBrush(Qt::white);
    p.drawEllipse(QPointF(10, 11), 7, 7);
    if (checked) {
        p.setPen(Qt::NoPen);
        p.setBrush(skin::HeadingColour());
        p.drawEllipse(QPointF(10, 11), 4, 4);
    }
    p.setPen(skin::TextColour());
    p.setFont(skin::Font(9));
    p.drawText(QRect(22, 0, kOptionSize.width() - 22, kOptionSize.height()), Qt::AlignLeft | Qt::AlignVCenter, words);
    return QPixmap::fromImage(image);
}

// Minutes, "m ", two-digit seconds and "s": "3m 07s".
QString lengthText(int32_t milliseconds)
{
    const float seconds = static_cast<float>(milliseconds) / 1000.0f;
    const int32_t whole = RoundToEven(seconds);
    return QStringLiteral("%1m %2s").arg(whole / 60).arg(whole % 60, 2, 10, QLatin1Char('0'));
}

bool isSong(const QString& name)
{
    // Case counts: "SONG.MP3" is not listed.
    const QString ending = name.right(3);
    return ending == QLatin1String("wav") || ending == QLatin1String("mp3") || ending == QLatin1String("wma");
}
}  // namespace

frmMyMusic2::frmMyMusic2()
    : CSkinWindow(QStringLiteral("frmMyMusic2"))
{
}

frmMyMusic2::~frmMyMusic2() = default;

QString frmMyMusic2::Key(const QTreeWidgetItem* item)
{
    return item ? item->data(0, kKeyRole).toString() : QString();
}

CAudioPlayer& frmMyMusic2::player()
{
    if (!mobjPlayer)
        mobjPlayer = std::make_unique<CAudioPlayer>();
    return *mobjPlayer;
}

void frmMyMusic2::Form_Load()
{
    Build(face(kStartSize));

    mSplitter = new QSplitter(Qt::Horizontal, this);
    mSplitter->setObjectName(QStringLiteral("Splitter"));
    mSplitter->setChildrenCollapsible(false);
    tvwFolders = new QTreeWidget(mSplitter);
    tvwFolders->setObjectName(QStringLiteral("tvwFolders"));
    tvwFolders->setHeaderHidden(true);
    tvwFolders->setColumnCount(1);
    tvwFolders->setMinimumWidth(1);
    SetTreeViewBackColour(tvwFolders, skin::FieldColour());
    lvwTracks = new QTreeWidget(mSplitter);
    lvwTracks->setObjectName(QStringLiteral("lvwTracks"));
    lvwTracks->setRootIsDecorated(false);
    lvwTracks->setUniformRowHeights(true);
    lvwTracks->setSelectionMode(QAbstractItemView::SingleSelection);
    lvwTracks->setHeaderLabels({QStringLiteral("Track Name"), QStringLiteral("Length")});
    lvwTracks->header()->resizeSection(0, TwipsToPixelsX(5000));
    lvwTracks->setMinimumWidth(1);
    mSplitter->setSizes({220, 460});
    mViewports.clear();
    for (QTreeWidget* view : {tvwFolders.data(), lvwTracks.data()}) {
        view->setFont(skin::Font(9));
        view->viewport()->setMouseTracking(true);
        view->viewport()->installEventFilter(this);
        mViewports << view->viewport();
    }
    lvwTracks->installEventFilter(this);
    mTracksObject = lvwTracks;

    for (const auto& [name, words] : {std::pair{QStringLiteral("imgShortTime"), QStringLiteral("Short songs")},
                                      std::pair{QStringLiteral("imgLongTime"), QStringLiteral("Long songs")}}) {
        auto* option = new CClickLabel(name, this);
        option->setPixmap(optionPicture(words, false));
        auto* checked = new QLabel(this);
        checked->setObjectName(name + QStringLiteral("Checked"));
        checked->setPixmap(optionPicture(words, true));
        checked->setAttribute(Qt::WA_TransparentForMouseEvents);
        checked->hide();
    }
    connect(findChild<CClickLabel*>(QStringLiteral("imgShortTime")), &CClickLabel::Click, this, [this] { imgTime_Click(false); });
    connect(findChild<CClickLabel*>(QStringLiteral("imgLongTime")), &CClickLabel::Click, this, [this] { imgTime_Click(true); });

    auto* grip = new CClickLabel(QStringLiteral("lblGrip"), this);
    grip->setText(QStringLiteral("\u25E2"));
    grip->setAlignment(Qt::AlignRight | Qt::AlignBottom);
    grip->setCursor(Qt::SizeFDiagCursor);
    grip->installEventFilter(this);

    connect(tvwFolders, &QTreeWidget::itemClicked, this, [this](QTreeWidgetItem* node) { tvwFolders_NodeClick(node); });
    connect(lvwTracks, &QTreeWidget::itemDoubleClicked, this, &frmMyMusic2::lvwTracks_DblClick);
    connect(Button(QStringLiteral("cmdPlay")), &CPictureButton::Released, this, &frmMyMusic2::PlaySelected);
    connect(Button(QStringLiteral("cmdStop")), &CPictureButton::Released, this, &frmMyMusic2::StopSelected);
    connect(Button(QStringLiteral("cmdNext")), &CPictureButton::Released, this, &frmMyMusic2::cmdNext_Released);
    connect(Button(QStringLiteral("cmdPrev")), &CPictureButton::Released, this, &frmMyMusic2::cmdPrev_Released);
    connect(Button(QStringLiteral("imgGrab")), &CPictureButton::Released, this, &frmMyMusic2::imgGrab_Released);
    connect(Button(QStringLiteral("imgCancel")), &CPictureButton::Released, this, &frmMyMusic2::imgCancel_Released);
    connect(Button(QStringLiteral("imgSearch")), &CPictureButton::Released, this, &frmMyMusic2::imgSearch_Released);
    connect(findChild<CClickLabel*>(QStringLiteral("lblClose")), &CClickLabel::Click, this, &frmMyMusic2::lblClose_Click);

    // Resizable from here on, down to the smallest window.
    setMinimumSize(TwipsToPixelsX(1000), TwipsToPixelsY(1500));
    setMaximumSize(QWIDGETSIZE_MAX, QWIDGETSIZE_MAX);
    resize(kStartSize);
    layOut();
    CenterOnMainWindow(this);

    if (QFileInfo::exists(gstrMyMusicPath)) {
        BuildTree();
        return;
    }
    if (ShowMessageWindow(QStringLiteral("frmConfirmSearch")) != QLatin1String("Q"))
        runSearch();
    BuildTree();
}

// The search in its own window, with its count and cancel; the main window
// takes nothing meanwhile, so nothing starts twice.
void frmMyMusic2::runSearch()
{
    QWidget* main = MainWindow();
    SetFormEnabled(main, false);
    frmSearching4Music search;
    search.Show(true);
    search.Unload();
    SetFormEnabled(main, true);
}

void frmMyMusic2::layOut()
{
    // The shape is read off the drawn window, and drawing a window not yet
    // shown lays it out again: once is enough.
    if (!mSplitter || mLayingOut)
        return;
    const QScopedValueRollback<bool> once(mLayingOut, true);
    const QSize size = this->size();
    const SkinWindowDesc desc = skin::LaidOut(face(size));
    mFace = skin::PaintFace(desc);
    for (const SkinButton& b : desc.buttons)
        Button(b.name)->setGeometry(b.rect);
    if (QLabel* close = Label(QStringLiteral("lblClose")))
        close->setGeometry(skin::CloseMarkRect(size.width()));
    mSplitter->setGeometry(kMargin, kListTop, std::max(1, size.width() - 2 * kMargin),
                           std::max(1, size.height() - kListTop - kFootHeight - 24));
    const QPoint optionsAt(size.width() - kMargin - 2 * kOptionSize.width(), kListTop - kOptionSize.height() - 4);
    for (const char* name : {"imgShortTime", "imgLongTime"}) {
        const QRect rect(optionsAt + QPoint(qstrcmp(name, "imgLongTime") == 0 ? kOptionSize.width() : 0, 0), kOptionSize);
        Label(QString::fromLatin1(name))->setGeometry(rect);
        Label(QString::fromLatin1(name) + QStringLiteral("Checked"))->setGeometry(rect);
    }
    Label(QStringLiteral("lblGrip"))->setGeometry(size.width() - 22, size.height() - 22, 18, 18);
    update();
    SetLayeredColourKey(this, kColourKeyBlue, 100, LWA_COLORKEY);
}

void frmMyMusic2::paintEvent(QPaintEvent*)
{
    QPainter p(this);
    p.drawImage(0, 0, mFace);
}

void frmMyMusic2::resizeEvent(QResizeEvent* event)
{
    CSkinWindow::resizeEvent(event);
    layOut();
}

bool frmMyMusic2::eventFilter(QObject* watched, QEvent* event)
{
    // Compared as plain objects: the views may be part way through their end.
    if (watched == mTracksObject && event->type() == QEvent::KeyPress) {
        const int key = static_cast<QKeyEvent*>(event)->key();
        if (key == Qt::Key_Return || key == Qt::Key_Enter) {
            PlaySelected();
            return true;
        }
    }
    if (event->type() == QEvent::MouseMove && mViewports.contains(watched))
        ::ResetButtonPictures(this);
    const bool mouse = event->type() == QEvent::MouseButtonPress || event->type() == QEvent::MouseMove ||
                       event->type() == QEvent::MouseButtonRelease;
    if (mouse && watched->objectName() == QLatin1String("lblGrip")) {
        const auto* at = static_cast<QMouseEvent*>(event);
        if (event->type() == QEvent::MouseButtonPress && at->button() == Qt::LeftButton) {
            // The desktop's own bottom-right resize, where it offers one.
            if (windowHandle() && windowHandle()->startSystemResize(Qt::BottomEdge | Qt::RightEdge))
                return true;
            mGripFrom = at->globalPosition().toPoint();
            mSizeFrom = size();
        } else if (event->type() == QEvent::MouseMove && (at->buttons() & Qt::LeftButton) && mSizeFrom.isValid()) {
            const QPoint moved = at->globalPosition().toPoint() - mGripFrom;
            resize((mSizeFrom + QSize(moved.x(), moved.y())).expandedTo(minimumSize()));
        } else if (event->type() == QEvent::MouseButtonRelease) {
            mSizeFrom = QSize();
        }
    }
    return CSkinWindow::eventFilter(watched, event);
}

void frmMyMusic2::BuildTree()
{
    tvwFolders->clear();
    auto* root = new QTreeWidgetItem(tvwFolders, {QStringLiteral("My Music")});
    root->setData(0, kKeyRole, kRootKey);
    root->setExpanded(true);
    // A folder standing twice is shown once; one that has gone stays in the
    // file and is left out here.
    QSet<QString> keys;
    QList<QTreeWidgetItem*> nodes;
    for (const QString& path : ReadLibrary(gstrMyMusicPath).paths) {
        if (keys.contains(path) || !QFileInfo(path).isDir())
            continue;
        keys.insert(path);
        const QString name = QFileInfo(path).fileName();
        auto* node = new QTreeWidgetItem({name.isEmpty() ? QDir::toNativeSeparators(path) : name});
        node->setData(0, kKeyRole, path);
        node->setData(0, kTagRole, path);
        nodes << node;
    }
    root->addChildren(nodes);
}

void frmMyMusic2::tvwFolders_NodeClick(QTreeWidgetItem* node)
{
    const int listing = ++mListing;
    lvwTracks->clear();
    QCoreApplication::processEvents();
    const QString folder = node ? node->data(0, kTagRole).toString() : QString();
    if (folder.isEmpty())
        return;  // the root: no folder of its own
    const QStringList files = QDir(folder).entryList(QDir::Files | QDir::Hidden, QDir::Name);
    for (const QString& name : files) {
        if (listing != mListing || !lvwTracks || !isVisible())
            return;
        if (!isSong(name))
            continue;
        auto* row = new QTreeWidgetItem(lvwTracks, {name, QString()});
        row->setData(0, kKeyRole, QDir(folder).filePath(name));
        QCoreApplication::processEvents();
    }
    if (listing == mListing)
        RunLengthPass();
}

void frmMyMusic2::RunLengthPass()
{
    const int listing = mListing;
    for (int i = 0; lvwTracks && i < lvwTracks->topLevelItemCount(); ++i) {
        QTreeWidgetItem* row = lvwTracks->topLevelItem(i);
        const QString key = Key(row);
        // A ".wma" file is not opened: it shows the length read before it.
        if (key.trimmed().right(3) != QLatin1String("wma")) {
            try {
                mobjAudioInfo.Open(key);
            } catch (const CError&) {
                // a file that does not open shows the last length read
            }
        }
        row->setText(1, lengthText(mobjAudioInfo.DurationMilliseconds()));
        QCoreApplication::processEvents();
        // A newer listing or a window the user has left ends this one.
        if (listing != mListing || !isVisible())
            return;
        QThread::msleep(1);
    }
}

int frmMyMusic2::selectedRow() const
{
    const QList<QTreeWidgetItem*> selected = lvwTracks->selectedItems();
    return selected.isEmpty() ? -1 : lvwTracks->indexOfTopLevelItem(selected.first());
}

void frmMyMusic2::selectRow(int row)
{
    QTreeWidgetItem* item = lvwTracks->topLevelItem(row);
    if (!item)
        return;
    lvwTracks->setCurrentItem(item);
    item->setSelected(true);
    lvwTracks->scrollToItem(item);
}

void frmMyMusic2::PlaySelected()
{
    const int row = selectedRow();
    if (mbPlaying && row == mintPlayingIndex)
        return;
    StopSelected();
    lvwTracks->viewport()->repaint();
    if (row < 0)
        return;
    if (!SoundOutputAvailable())
        return void(ShowMessageWindow(QStringLiteral("frmNoSoundOutput")));
    QTreeWidgetItem* item = lvwTracks->topLevelItem(row);
    lvwTracks->scrollToItem(item);
    player().LoadFile(Key(item));
    player().StartPlaying();
    mintPlayingIndex = static_cast<int16_t>(row);
    mbPlaying = true;
    lvwTracks->viewport()->repaint();
}

void frmMyMusic2::StopSelected()
{
    player().StopPlaying();
    mbPlaying = false;
}

void frmMyMusic2::lvwTracks_DblClick()
{
    // Plays at once, beside what plays: the playing flag stays as it was.
    const int row = selectedRow();
    if (row < 0)
        return;
    if (!SoundOutputAvailable())
        return void(ShowMessageWindow(QStringLiteral("frmNoSoundOutput")));
    player().LoadFile(Key(lvwTracks->topLevelItem(row)));
    player().StartPlaying();
}

void frmMyMusic2::cmdNext_Released()
{
    const int row = selectedRow();
    if (row >= 0 && row + 1 < lvwTracks->topLevelItemCount())
        selectRow(row + 1);
    if (mbPlaying) {
        StopSelected();
        PlaySelected();
    }
}

void frmMyMusic2::cmdPrev_Released()
{
    const int row = selectedRow();
    if (row > 0)
        selectRow(row - 1);
    if (mbPlaying) {
        StopSelected();
        PlaySelected();
    }
}

void frmMyMusic2::imgGrab_Released()
{
    const int row = selectedRow();
    if (row < 0 || lvwTracks->topLevelItemCount() == 0)
        return;
    Tag = Key(lvwTracks->topLevelItem(row));
    player().StopPlaying();
    Hide();
}

void frmMyMusic2::imgCancel_Released()
{
    StopSelected();
    Tag = QStringLiteral("Q");
    Hide();
}

void frmMyMusic2::imgSearch_Released()
{
    runSearch();
    BuildTree();
}

void frmMyMusic2::lblClose_Click()
{
    // The window's objects go with it: what plays stops.
    mobjPlayer.reset();
    mbPlaying = false;
    Unload();
}

void frmMyMusic2::imgTime_Click(bool longTime)
{
    // Shows the choice; nothing reads it.
    Label(QStringLiteral("imgShortTimeChecked"))->setVisible(!longTime);
    Label(QStringLiteral("imgLongTimeChecked"))->setVisible(longTime);
}
