#include "core/twips.h"

#include <QGuiApplication>
#include <QScreen>
#include <cmath>

namespace {
const QScreen* orPrimary(const QScreen* screen)
{
    return screen ? screen : QGuiApplication::primaryScreen();
}
double perPixel(double dpi)
{
    return dpi > 0 ? 1440.0 / dpi : 15.0;
}
}  // namespace

double TwipsPerPixelX(const QScreen* screen)
{
    const QScreen* s = orPrimary(screen);
    return perPixel(s ? s->logicalDotsPerInchX() : 96.0);
}

double TwipsPerPixelY(const QScreen* screen)
{
    const QScreen* s = orPrimary(screen);
    return perPixel(s ? s->logicalDotsPerInchY() : 96.0);
}

int TwipsToPixelsX(double twips, const QScreen* screen)
{
    return static_cast<int>(std::lround(twips / TwipsPerPixelX(screen)));
}

int TwipsToPixelsY(double twips, const QScreen* screen)
{
    return static_cast<int>(std::lround(twips / TwipsPerPixelY(screen)));
}
