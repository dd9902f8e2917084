#pragma once
// Answers the modal windows a test expects, in order: "when frmX appears,
// press imgCancel", or press "Enter" / "Escape". Notices are not answered. A
// modal window nobody expected is noted and closed, so that a test fails
// instead of hanging; so keep one answerer alive at a time, and queue
// further answers on it.
#include <QList>
#include <QObject>
#include <QStringList>
#include <QTimer>

class QWidget;

class DialogAnswerer : public QObject {
    Q_OBJECT
public:
    struct Seen {
        QString window;
        QString text;  // the message box's text, or the window's label texts
    };

    DialogAnswerer();

    // control: the objectName of a child to press, "Enter", "Escape", or
    // "OK", "Yes", "No" for the plain message box.
    DialogAnswerer& answer(const QString& window, const QString& control);

    bool allAnswered() const { return mQueue.isEmpty(); }
    QList<Seen> seen;
    QStringList unexpected;

private:
    struct Expected {
        QString window;
        QString control;
    };
    void poll();
    void press(QWidget* window, const QString& control);

    QList<Expected> mQueue;
    QTimer mTimer;
};
