#pragma once
// The base of a test that plays or records: one sound server for the process
// (the sound backend connects once), a fresh ground and an answerer per case.
// A modal window nobody expected fails the case.
#include "support/DialogAnswerer.h"
#include "support/PulseServer.h"
#include "support/TestGround.h"

#include <QObject>
#include <QTest>
#include <memory>

class SoundTestCase : public QObject {
    Q_OBJECT
protected:
    std::unique_ptr<PulseServer> pulse;
    std::unique_ptr<TestGround> ground;
    std::unique_ptr<DialogAnswerer> answerer;

    QString scratch(const QString& name) const { return ground->tempFolder() + "/" + name; }

private slots:
    void initTestCase()
    {
        pulse = std::make_unique<PulseServer>();
        QVERIFY2(pulse->Started(), qPrintable(pulse->Error()));
    }
    void init()
    {
        ground = std::make_unique<TestGround>();
        answerer = std::make_unique<DialogAnswerer>();
    }
    void cleanup()
    {
        QVERIFY2(answerer->unexpected.isEmpty(), qPrintable(answerer->unexpected.join(", ")));
        answerer.reset();
        ground.reset();
    }
};
