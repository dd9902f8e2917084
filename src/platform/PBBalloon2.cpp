#include "platform/PBBalloon2.h"

#include <QSystemTrayIcon>

namespace {
constexpr int kBalloonMilliseconds = 10000;
}

PBTrayIcon::PBTrayIcon(QObject* parent)
    : QObject(parent), mIcon(new QSystemTrayIcon(this))
{
}

PBTrayIcon::~PBTrayIcon() { Remove(); }

void PBTrayIcon::SetPicture(const QIcon& picture)
{
    mIcon->setIcon(picture);
    mIcon->show();
    mShown = true;
}

void PBTrayIcon::SetTip(const QString& tip)
{
    mTip = tip;
    mIcon->setToolTip(tip);
}

void PBTrayIcon::Remove()
{
    mIcon->hide();
    mShown = false;
}

PBBalloon::PBBalloon(QObject* parent)
    : QObject(parent)
{
}

void PBBalloon::SetTitle(const QString& title, bool bold, const QColor& colour)
{
    mTitle = title;
    mBold = bold;
    mColour = colour;
}

void PBBalloon::SetText(const QString& text) { mText = text; }

void PBBalloon::Show()
{
    mVisible = true;
    // The desktop's notice draws the title in its own face and colour.
    if (mIcon && mIcon->Shown() && QSystemTrayIcon::supportsMessages())
        mIcon->Icon()->showMessage(mTitle, mText, QSystemTrayIcon::Information, kBalloonMilliseconds);
}

void PBBalloon::Hide()
{
    // A shown notice cannot be withdrawn; it goes when the icon is removed.
    mVisible = false;
}
