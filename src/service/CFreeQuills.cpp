#include "service/CFreeQuills.h"

#include "service/frmFreeQuills.h"

void CFreeQuills::Start()
{
    frmFreeQuills window;
    window.Load();
    window.Show(true);
    window.Unload();
}
