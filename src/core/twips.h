#pragma once
// Lengths in windows are given in twips: 1440 to the inch at the screen's
// logical DPI (15 twips a pixel at 96 DPI).
class QWidget;
class QScreen;

double TwipsPerPixelX(const QScreen* screen = nullptr);
double TwipsPerPixelY(const QScreen* screen = nullptr);
int TwipsToPixelsX(double twips, const QScreen* screen = nullptr);
int TwipsToPixelsY(double twips, const QScreen* screen = nullptr);
