#pragma once
// Answers the modal windows a test expects, in order: "when frmX appears,
// press imgCancel", press "Enter" / "Escape", or run a step of the test's own
// ("type this and press imgSignIn"). Notices are not answered. Each answer
// runs from the event queue, so one that opens further windows leaves the
// answerer free to answer them; a window answered before may stay up or come
// back to the front and is left alone. A modal window nobody expected is
// noted and closed, so that a test fails instead of hanging; so keep one
// answerer alive at a time, and queue further answers on it.
#include <QList>
#include <QObject>
#include <QPointer>
#include <QStringList>
#include <QTimer>
#include <functional>

class QWidget;

class DialogAnswerer : public QObject {
    Q_OBJECT
public:
    using Step = std::function<void(QWidget*)>;
    struct Seen {
        QString window;
        QString text;  // the message box's text, or the window's label and text box texts
    };

    DialogAnswerer();

    // control: the objectName of a child to press, "Enter", "Escape", or
    // "OK", "Yes", "No" for the plain message box.
    DialogAnswerer& answer(const QString& window, const QString& control);
    DialogAnswerer& answer(const QString& window, Step step);

    bool allAnswered() const { return mQueue.isEmpty(); }
    // Every answer given and no other window came; problems() says otherwise what.
    bool finishedCleanly() const { return allAnswered() && unexpected.isEmpty(); }
    QString problems() const;
    QList<Seen> seen;
    QStringList unexpected;

private:
    struct Expected {
        QString window;
        Step step;
    };
    void poll();
    void press(QWidget* window, const QString& control);

    QList<Expected> mQueue;
    QList<QPointer<QWidget>> mAnswered;
    bool mAnswerQueued = false;
    QTimer mTimer;
};
