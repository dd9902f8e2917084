#pragma once
// Each test runs on its own ground: a fresh settings store, program folder and
// temporary folder under one scratch directory, with the desktop hand-off and
// the program's end recorded instead of carried out.
#include <QStringList>
#include <QTemporaryDir>

class TestGround {
public:
    TestGround();
    ~TestGround();
    TestGround(const TestGround&) = delete;
    TestGround& operator=(const TestGround&) = delete;

    QString root() const { return mDir.path(); }
    QString programFolder() const;
    QString tempFolder() const;

    QStringList openedUrls;  // what OpenInBrowser handed to the desktop
    QList<int> endCodes;     // each time the program would have ended at once

private:
    QTemporaryDir mDir;
};
