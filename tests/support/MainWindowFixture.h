#pragma once
// The main window of one case as the program has it: the window dialogs
// centre on, loaded on demand, dropped when the fixture goes. The form comes
// from the caller's layer (its getter makes it on first use, its dropper ends
// it), so this part stays on the ground with the rest of the test support.
// Make it on a TestGround, and drop it before the ground.
#include "core/MainWindow.h"

#include <QWidget>

template <class Form>
class MainWindowFixture {
public:
    MainWindowFixture(Form& (*get)(), void (*drop)()) : mGet(get), mDrop(drop)
    {
        SetMainWindow([get] {
            get().Load();
            return static_cast<QWidget*>(&get());
        });
    }
    ~MainWindowFixture() { mDrop(); }
    MainWindowFixture(const MainWindowFixture&) = delete;
    MainWindowFixture& operator=(const MainWindowFixture&) = delete;

    // Loads the window as the start of the program does.
    Form& Load()
    {
        mGet().Load();
        return mGet();
    }

private:
    Form& (*mGet)();
    void (*mDrop)();
};
