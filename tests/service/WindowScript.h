#pragma once
// Plays a script against the windows of a test: "when frmLogin shows, type
// this and press imgSignIn", "when frmAnnouncements shows, note its text and
// press imgOK". Each step runs once its window is up; steps act through the
// event queue so that a step which opens further windows leaves the script
// free to answer them. Windows nobody expected are noted and hidden.
#include <QApplication>
#include <QLabel>
#include <QList>
#include <QObject>
#include <QPlainTextEdit>
#include <QPointer>
#include <QStringList>
#include <QTest>
#include <QTimer>
#include <QWidget>
#include <functional>

class WindowScript : public QObject {
public:
    using Step = std::function<void(QWidget*)>;

    WindowScript()
    {
        connect(&mTimer, &QTimer::timeout, this, &WindowScript::poll);
        mTimer.start(10);
    }

    WindowScript& when(const QString& window, Step step)
    {
        mSteps.append({window, std::move(step)});
        return *this;
    }
    // Presses and releases the mouse on a control of the window, through the event queue.
    static Step press(const QString& control)
    {
        return [control](QWidget* window) {
            if (QWidget* child = window->findChild<QWidget*>(control))
                QMetaObject::invokeMethod(child, [child] { QTest::mouseClick(child, Qt::LeftButton); },
                                          Qt::QueuedConnection);
        };
    }

    // Types a key into the window, through the event queue.
    static Step key(Qt::Key k)
    {
        return [k](QWidget* window) {
            QMetaObject::invokeMethod(window, [window, k] { QTest::keyClick(window, k); }, Qt::QueuedConnection);
        };
    }

    bool done() const { return mSteps.isEmpty(); }
    QStringList seen;        // "window: its text"
    QStringList unexpected;  // windows that came with no step waiting for them

private:
    struct Entry {
        QString window;
        Step step;
    };
    static QString textOf(QWidget* w)
    {
        QStringList parts;
        for (auto* label : w->findChildren<QLabel*>())
            if (label->isVisible() && !label->text().isEmpty())
                parts << label->text();
        for (auto* edit : w->findChildren<QPlainTextEdit*>())
            parts << edit->toPlainText();
        return parts.join('\n');
    }
    void poll()
    {
        QWidget* modal = QApplication::activeModalWidget();
        if (!modal || modal == mLast)
            return;
        mLast = nullptr;
        if (!mSteps.isEmpty() && modal->objectName() == mSteps.first().window) {
            mLast = modal;
            mActedOn << modal;
            const Entry entry = mSteps.takeFirst();
            seen << modal->objectName() + ": " + textOf(modal);
            entry.step(modal);
            return;
        }
        // A window answered before may come back to the front; it is left alone.
        if (mActedOn.contains(QPointer<QWidget>(modal)))
            return;
        unexpected << modal->objectName() + ": " + textOf(modal);
        modal->hide();
    }

    QList<Entry> mSteps;
    QTimer mTimer;
    // Guarded: a window made afresh may take the place of one now gone.
    QPointer<QWidget> mLast;  // the window the last step acted on, until another shows
    QList<QPointer<QWidget>> mActedOn;
};
