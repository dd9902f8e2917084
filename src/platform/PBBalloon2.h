#pragma once
// The tray icon and its balloon, over the desktop's notification area. The
// balloon keeps its own words and colours; where the desktop shows no tray
// (or draws its own notices) the words still stand and nothing fails.
#include <QColor>
#include <QIcon>
#include <QObject>
#include <QPointer>
#include <QString>

class QSystemTrayIcon;

class PBTrayIcon : public QObject {
    Q_OBJECT
public:
    explicit PBTrayIcon(QObject* parent = nullptr);
    ~PBTrayIcon() override;

    void SetPicture(const QIcon& picture);
    void SetTip(const QString& tip);
    QString Tip() const { return mTip; }
    // Takes the icon out of the tray; setting a picture puts it back.
    void Remove();
    bool Shown() const { return mShown; }
    QSystemTrayIcon* Icon() const { return mIcon; }

private:
    QSystemTrayIcon* mIcon;
    QString mTip;
    bool mShown = false;
};

class PBBalloon : public QObject {
    Q_OBJECT
public:
    explicit PBBalloon(QObject* parent = nullptr);

    void SetTitle(const QString& title, bool bold, const QColor& colour);
    void SetText(const QString& text);
    void AttachTo(PBTrayIcon* icon) { mIcon = icon; }
    void Show();
    void Hide();

    QString Title() const { return mTitle; }
    QString Text() const { return mText; }
    bool TitleBold() const { return mBold; }
    QColor TitleColour() const { return mColour; }
    bool Visible() const { return mVisible; }

private:
    QPointer<PBTrayIcon> mIcon;
    QString mTitle;
    QString mText;
    bool mBold = false;
    QColor mColour;
    bool mVisible = false;
};
