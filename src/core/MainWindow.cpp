#include "core/MainWindow.h"

namespace {
std::function<QWidget*()>& lookup()
{
    static std::function<QWidget*()> installed;
    return installed;
}
}  // namespace

QWidget* MainWindow()
{
    return lookup() ? lookup()() : nullptr;
}

void SetMainWindow(std::function<QWidget*()> reach)
{
    lookup() = std::move(reach);
}
