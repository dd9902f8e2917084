#pragma once
// Where the login window's sign-up choice leads: the main window is unloaded
// and the intro window shown, not modally. Those windows belong to the
// start-up module, which fills these in; an empty one does nothing.
#include <functional>

struct SignupRoute {
    std::function<void()> unloadMainWindow;
    std::function<void()> showIntro;
};

SignupRoute& signupRoute();
