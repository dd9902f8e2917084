#pragma once
// Referring friends: shows frmFreeQuills modally and drops it. The caller,
// the main window, shows itself again afterwards.
class CFreeQuills {
public:
    void Start();
};
