#include "skin/SkinStyle.h"

#include "core/modCommon.h"

#include <QCoreApplication>
#include <QDir>
#include <QFontDatabase>
#include <QFontMetrics>
#include <QLinearGradient>
#include <QPainter>
#include <QPainterPath>
#include <QRadialGradient>
#include <algorithm>
#include <cmath>

namespace skin {

namespace {
// Palette: violet band, warm coral for the proposed course, lavender for the way out.
const QColor kBandFrom(0x55, 0x3C, 0xC8);
const QColor kBandTo(0xB0, 0x4F, 0xD6);
const QColor kBodyTop(0xFF, 0xFF, 0xFF);
const QColor kBodyFoot(0xF1, 0xEA, 0xFF);
const QColor kEdge(0x4A, 0x33, 0xB0);
const QColor kText(0x3E, 0x35, 0x5E);
const QColor kHeading(0x4A, 0x2F, 0xA8);
const QColor kCoralLight(0xFF, 0xA4, 0x5A);
const QColor kCoral(0xFF, 0x5F, 0x6D);
const QColor kLavender(0xE6, 0xDC, 0xFF);

// Shape of every face.
constexpr int kCardTop = 22;     // the card starts here; the badge stands above it
constexpr int kBandHeight = 48;  // the title band
constexpr int kRadius = 22;
const QPointF kBadgeCentre(48, 44);
constexpr double kBadgeRadius = 36;

// Button row at the foot.
constexpr int kButtonHeight = 42;  // picture height, a glow margin included
constexpr int kGlow = 3;
constexpr int kButtonGap = 16;
constexpr int kFootMargin = 16;

constexpr int kDotsPerMetre = 3780;  // 96 dots an inch: point sizes read as on screen

QImage blankImage(QSize size)
{
    QImage image(size, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    image.setDotsPerMeterX(kDotsPerMetre);
    image.setDotsPerMeterY(kDotsPerMetre);
    return image;
}

QPainterPath cardPath(QSize size)
{
    QPainterPath card;
    card.addRoundedRect(QRectF(1, kCardTop, size.width() - 2, size.height() - kCardTop - 1), kRadius, kRadius);
    QPainterPath badge;
    badge.addEllipse(kBadgeCentre, kBadgeRadius, kBadgeRadius);
    return card.united(badge);
}

// A feather, drawn as a leaf with its spine, standing for the quill of the name.
void paintQuill(QPainter& p, const QPointF& centre, double size)
{
    p.save();
    p.translate(centre);
    p.rotate(40);
    p.scale(size / 100.0, size / 100.0);
    QPainterPath vane;
    vane.moveTo(0, 48);
    vane.cubicTo(-30, 20, -26, -30, 0, -50);
    vane.cubicTo(24, -28, 28, 18, 0, 48);
    p.setPen(Qt::NoPen);
    p.setBrush(QColor(255, 255, 255, 240));
    p.drawPath(vane);
    // Notches give the vane its feathered edge.
    p.setPen(QPen(QColor(0xFF, 0x86, 0x62), 4, Qt::SolidLine, Qt::RoundCap));
    p.drawLine(QPointF(-18, -6), QPointF(-6, 2));
    p.drawLine(QPointF(16, -14), QPointF(5, -6));
    p.setPen(QPen(QColor(0xE0, 0x50, 0x5A), 5, Qt::SolidLine, Qt::RoundCap));
    p.drawLine(QPointF(0, 60), QPointF(0, -40));
    p.restore();
}

void paintNote(QPainter& p, const QPointF& at, double size, const QColor& colour)
{
    p.save();
    p.setPen(Qt::NoPen);
    p.setBrush(colour);
    p.translate(at);
    p.scale(size / 40.0, size / 40.0);
    p.drawEllipse(QRectF(-12, 10, 16, 12));
    p.drawRect(QRectF(1, -22, 3, 38));
    QPainterPath flag;
    flag.moveTo(1, -22);
    flag.cubicTo(14, -18, 18, -8, 12, 2);
    flag.cubicTo(14, -8, 8, -12, 4, -14);
    flag.closeSubpath();
    p.drawPath(flag);
    p.restore();
}

void paintBadge(QPainter& p)
{
    QRadialGradient fill(kBadgeCentre - QPointF(10, 12), kBadgeRadius * 1.4);
    fill.setColorAt(0, kCoralLight);
    fill.setColorAt(1, kCoral);
    p.setPen(QPen(Qt::white, 4));
    p.setBrush(fill);
    p.drawEllipse(kBadgeCentre, kBadgeRadius - 3, kBadgeRadius - 3);
    p.setPen(QPen(kEdge, 2));
    p.setBrush(Qt::NoBrush);
    p.drawEllipse(kBadgeCentre, kBadgeRadius - 0.5, kBadgeRadius - 0.5);
    paintQuill(p, kBadgeCentre, 50);
}

void paintCard(QPainter& p, QSize size)
{
    const QPainterPath card = cardPath(size);
    QLinearGradient body(0, kCardTop, 0, size.height());
    body.setColorAt(0, kBodyTop);
    body.setColorAt(1, kBodyFoot);
    p.setPen(Qt::NoPen);
    p.setBrush(body);
    p.drawPath(card);

    // Title band, clipped to the card so it keeps the rounded corners.
    p.save();
    p.setClipPath(card);
    QLinearGradient band(0, 0, size.width(), 0);
    band.setColorAt(0, kBandFrom);
    band.setColorAt(1, kBandTo);
    p.fillRect(QRect(0, kCardTop, size.width(), kBandHeight), band);
    QLinearGradient sheen(0, kCardTop, 0, kCardTop + kBandHeight);
    sheen.setColorAt(0, QColor(255, 255, 255, 70));
    sheen.setColorAt(0.5, QColor(255, 255, 255, 10));
    sheen.setColorAt(1, QColor(0, 0, 0, 25));
    p.fillRect(QRect(0, kCardTop, size.width(), kBandHeight), sheen);
    p.fillRect(QRect(0, kCardTop + kBandHeight, size.width(), 3), QColor(0xFF, 0x8E, 0x6A));
    // A few quiet notes in the corner of the body.
    paintNote(p, QPointF(size.width() - 30, size.height() - 40), 26, QColor(0x8A, 0x6F, 0xE0, 26));
    paintNote(p, QPointF(size.width() - 56, size.height() - 28), 18, QColor(0x8A, 0x6F, 0xE0, 20));
    p.restore();

    p.setPen(QPen(kEdge, 2));
    p.setBrush(Qt::NoBrush);
    p.drawPath(card);
    paintBadge(p);

    // The program's name in the band.
    QFont title = Font(17, true);
    p.setFont(title);
    const QRect titleRect(int(kBadgeCentre.x() + kBadgeRadius + 10), kCardTop, size.width(), kBandHeight);
    p.setPen(QColor(0, 0, 0, 60));
    p.drawText(titleRect.translated(1, 2), Qt::AlignLeft | Qt::AlignVCenter, QStringLiteral("Quillotone"));
    p.setPen(Qt::white);
    p.drawText(titleRect, Qt::AlignLeft | Qt::AlignVCenter, QStringLiteral("Quillotone"));
}

void paintMinimizeMark(QPainter& p, const QRect& r)
{
    p.setPen(Qt::NoPen);
    p.setBrush(QColor(255, 255, 255, 45));
    p.drawEllipse(r.adjusted(2, 2, -2, -2));
    p.setPen(QPen(Qt::white, 3, Qt::SolidLine, Qt::RoundCap));
    const int y = r.center().y() + 3;
    p.drawLine(r.left() + 9, y, r.right() - 9, y);
}

// Text that must fit: shrinks a step at a time rather than spill.
void drawFitted(QPainter& p, const QRect& r, int flags, const QString& text, double pointSize, bool bold)
{
    QFont font = Font(pointSize, bold);
    for (double pt = pointSize; pt > 6; pt -= 0.5) {
        font.setPointSizeF(pt);
        const QRect need = QFontMetrics(font).boundingRect(r, flags, text);
        if (need.height() <= r.height() && need.width() <= r.width())
            break;
    }
    p.setFont(font);
    p.drawText(r, flags, text);
}

constexpr int kStepsHeight = 78;

// Numbered discs joined by a dotted line, each with its words beneath.
void paintSteps(QPainter& p, const QRect& area, const QStringList& steps)
{
    const int n = int(steps.size());
    const int column = area.width() / n;
    const int y = area.top() + 16;
    p.setPen(QPen(QColor(0xC9, 0xBA, 0xFF), 2, Qt::DotLine));
    p.drawLine(area.left() + column / 2, y, area.left() + column * n - column / 2, y);
    for (int i = 0; i < n; ++i) {
        const QPointF centre(area.left() + column * i + column / 2.0, y);
        QLinearGradient fill(0, y - 15, 0, y + 15);
        fill.setColorAt(0, kCoralLight);
        fill.setColorAt(1, kCoral);
        p.setPen(QPen(Qt::white, 2));
        p.setBrush(fill);
        p.drawEllipse(centre, 15, 15);
        p.setFont(Font(11, true));
        p.setPen(Qt::white);
        p.drawText(QRectF(centre.x() - 15, y - 15, 30, 30), Qt::AlignCenter, QString::number(i + 1));
        p.setPen(kHeading);
        drawFitted(p, QRect(area.left() + column * i + 4, y + 20, column - 8, kStepsHeight - 36),
                   Qt::AlignHCenter | Qt::AlignTop | Qt::TextWordWrap, steps[i], 9.5, true);
    }
}

// Three dots at the foot of a notice that has no button: work is going on.
void paintWaitingDots(QPainter& p, QSize size)
{
    p.setPen(Qt::NoPen);
    const int y = size.height() - 30;
    for (int i = 0; i < 3; ++i) {
        QColor dot = kCoral;
        dot.setAlpha(255 - i * 70);
        p.setBrush(dot);
        p.drawEllipse(QPointF(size.width() / 2.0 - 20 + i * 20, y), 5, 5);
    }
}

void paintWording(QPainter& p, const SkinWindowDesc& desc)
{
    QRect area = desc.bodyRect;
    if (!desc.steps.isEmpty()) {
        paintSteps(p, QRect(area.left(), area.bottom() - kStepsHeight, area.width(), kStepsHeight), desc.steps);
        area.setBottom(area.bottom() - kStepsHeight - 6);
    }
    if (!desc.heading.isEmpty()) {
        const QFont heading = Font(13, true);
        const int h = QFontMetrics(heading).boundingRect(area, Qt::TextWordWrap | Qt::AlignHCenter, desc.heading).height();
        p.setPen(kHeading);
        drawFitted(p, QRect(area.left(), area.top(), area.width(), h), Qt::TextWordWrap | Qt::AlignHCenter,
                   desc.heading, 13, true);
        area.setTop(area.top() + h + 8);
    }
    if (!desc.body.isEmpty()) {
        p.setPen(kText);
        drawFitted(p, area, Qt::TextWordWrap | Qt::AlignHCenter | Qt::AlignTop, desc.body, 10.5, false);
    }
}

// Colour keying wants hard edges: a half-covered edge pixel would otherwise
// blend towards the key and show a blue fringe. Pixels mostly outside the
// face become the key, the rest become opaque face.
QImage onKeyBlue(const QImage& face)
{
    QImage out(face.size(), QImage::Format_RGB32);
    out.setDotsPerMeterX(face.dotsPerMeterX());
    out.setDotsPerMeterY(face.dotsPerMeterY());
    const QImage src = face.convertToFormat(QImage::Format_ARGB32);
    const QRgb key = kColourKeyBlue.rgb();
    for (int y = 0; y < src.height(); ++y) {
        const auto* in = reinterpret_cast<const QRgb*>(src.constScanLine(y));
        auto* line = reinterpret_cast<QRgb*>(out.scanLine(y));
        for (int x = 0; x < src.width(); ++x) {
            if (qAlpha(in[x]) < 128) {
                line[x] = key;
            } else {
                // Blend what little is transparent with the body colour, never with the key.
                const int a = qAlpha(in[x]);
                const auto mix = [a](int c, int under) { return (c * a + under * (255 - a)) / 255; };
                QRgb rgb = qRgb(mix(qRed(in[x]), kEdge.red()), mix(qGreen(in[x]), kEdge.green()),
                                mix(qBlue(in[x]), kEdge.blue()));
                if (rgb == key)
                    rgb = qRgb(0, 0, 254);
                line[x] = rgb;
            }
        }
    }
    return out;
}

int captionWidth(const SkinButton& b)
{
    return QFontMetrics(Font(11, true)).horizontalAdvance(b.caption);
}
}  // namespace

QFont Font(double pointSize, bool bold)
{
    // The first of these that is installed; else the desktop's sans serif.
    static const QString family = [] {
        // An installed program brings its face along, beside its own files.
        const QDir bundled(QCoreApplication::applicationDirPath() + QStringLiteral("/../share/quillotone/fonts"));
        for (const QString& file : bundled.entryList({QStringLiteral("*.ttf")}, QDir::Files))
            QFontDatabase::addApplicationFont(bundled.filePath(file));
        const QStringList installed = QFontDatabase::families();
        for (const char* wanted : {"Comfortaa", "Noto Sans", "DejaVu Sans"}) {
            if (installed.contains(QLatin1String(wanted)))
                return QString::fromLatin1(wanted);
        }
        return QString();
    }();
    QFont font;
    if (!family.isEmpty())
        font.setFamily(family);
    font.setStyleHint(QFont::SansSerif);
    font.setPointSizeF(pointSize);
    font.setBold(bold);
    return font;
}

QColor TextColour()
{
    return kText;
}

QColor HeadingColour()
{
    return kHeading;
}

QColor FieldColour()
{
    return QColor(0xFB, 0xF9, 0xFF);
}

QRect CloseMarkRect(int width)
{
    return QRect(width - 48, kCardTop + 9, 30, 30);
}

QRect MinimizeMarkRect(int width)
{
    return QRect(width - 84, kCardTop + 9, 30, 30);
}

SkinWindowDesc LaidOut(SkinWindowDesc desc)
{
    // The button row: buttons without a place share the foot, centred.
    QList<SkinButton*> row;
    for (SkinButton& b : desc.buttons) {
        if (b.rect.isEmpty())
            row.append(&b);
    }
    int total = 0;
    for (SkinButton* b : row)
        total += std::max(120, captionWidth(*b) + 48) + (total ? kButtonGap : 0);
    int x = (desc.size.width() - total) / 2;
    const int y = desc.size.height() - kButtonHeight - kFootMargin;
    for (SkinButton* b : row) {
        const int w = std::max(120, captionWidth(*b) + 48);
        b->rect = QRect(x, y, w, kButtonHeight);
        x += w + kButtonGap;
    }
    if (desc.bodyRect.isEmpty()) {
        const int top = int(kBadgeCentre.y() + kBadgeRadius) + 8;
        int foot = row.isEmpty() ? desc.size.height() - kFootMargin : y - 8;
        // The wording stops above the run-time text and boxes that stand in the body.
        for (const SkinLabel& l : desc.labels) {
            if (l.kind == LabelKind::Text && l.rect.top() > top)
                foot = std::min(foot, l.rect.top() - 6);
        }
        for (const SkinTextBox& t : desc.textBoxes) {
            if (t.rect.top() > top)
                foot = std::min(foot, t.rect.top() - 6);
        }
        desc.bodyRect = QRect(28, top, desc.size.width() - 56, foot - top);
    }
    return desc;
}

QImage PaintFace(const SkinWindowDesc& desc)
{
    QImage face = blankImage(desc.size);
    {
        QPainter p(&face);
        p.setRenderHints(QPainter::Antialiasing | QPainter::TextAntialiasing);
        paintCard(p, desc.size);
        paintWording(p, desc);
        if (desc.buttons.isEmpty() && desc.labels.isEmpty() && desc.textBoxes.isEmpty())
            paintWaitingDots(p, desc.size);
        for (const SkinButton& b : desc.buttons)
            p.drawPixmap(b.rect.topLeft(), PaintButton(b, ButtonState::Rest));
        if (desc.minimizeMark)
            paintMinimizeMark(p, MinimizeMarkRect(desc.size.width()));
        if (desc.closeMark) {
            SkinButton cross{QString(), QString(), ButtonLook::Round, CloseMarkRect(desc.size.width())};
            p.drawPixmap(cross.rect.topLeft(), PaintButton(cross, ButtonState::Rest));
        }
    }
    return onKeyBlue(face);
}

QPixmap PaintButton(const SkinButton& button, ButtonState state)
{
    QImage image = blankImage(button.rect.size());
    QPainter p(&image);
    p.setRenderHints(QPainter::Antialiasing | QPainter::TextAntialiasing);
    const QRectF shape = QRectF(image.rect()).adjusted(kGlow + 0.5, kGlow + 0.5, -kGlow - 0.5, -kGlow - 0.5);
    const double radius = shape.height() / 2;
    const bool over = state == ButtonState::Over;
    const bool down = state == ButtonState::Clicked;

    if (button.look == ButtonLook::Round) {
        // A round mark on the title band: a pale disc with a cross.
        const int alpha = down ? 150 : over ? 110 : 45;
        p.setPen(over || down ? QPen(Qt::white, 2) : Qt::NoPen);
        p.setBrush(QColor(255, 255, 255, alpha));
        p.drawEllipse(shape);
        const QColor ink = over || down ? kCoral : Qt::white;
        p.setPen(QPen(ink, 3, Qt::SolidLine, Qt::RoundCap));
        const QRectF c = shape.adjusted(8, 8, -8, -8).translated(0, down ? 1 : 0);
        p.drawLine(c.topLeft(), c.bottomRight());
        p.drawLine(c.topRight(), c.bottomLeft());
        return QPixmap::fromImage(image);
    }

    const bool primary = button.look == ButtonLook::Primary;
    if (over) {
        p.setPen(QPen(primary ? QColor(0xFF, 0xC8, 0x9E) : QColor(0xC9, 0xBA, 0xFF), kGlow * 2));
        p.setBrush(Qt::NoBrush);
        p.drawRoundedRect(shape, radius, radius);
    }
    QLinearGradient fill(0, shape.top(), 0, shape.bottom());
    if (primary) {
        fill.setColorAt(0, down ? QColor(0xE8, 0x7A, 0x3E) : over ? QColor(0xFF, 0xB8, 0x6C) : kCoralLight);
        fill.setColorAt(1, down ? QColor(0xD8, 0x44, 0x58) : over ? QColor(0xFF, 0x74, 0x80) : kCoral);
    } else {
        fill.setColorAt(0, down ? QColor(0xD6, 0xC9, 0xFF) : over ? QColor(0xFF, 0xFF, 0xFF) : QColor(0xF6, 0xF2, 0xFF));
        fill.setColorAt(1, down ? QColor(0xC4, 0xB2, 0xFF) : over ? QColor(0xEC, 0xE4, 0xFF) : kLavender);
    }
    p.setPen(QPen(primary ? QColor(0xD9, 0x48, 0x55) : QColor(0x8C, 0x76, 0xDA), 1.5));
    p.setBrush(fill);
    p.drawRoundedRect(shape, radius, radius);
    if (!down) {
        // A soft light on the upper half makes the face look rounded.
        QLinearGradient light(0, shape.top(), 0, shape.center().y());
        light.setColorAt(0, QColor(255, 255, 255, primary ? 95 : 160));
        light.setColorAt(1, QColor(255, 255, 255, 0));
        p.setPen(Qt::NoPen);
        p.setBrush(light);
        p.drawRoundedRect(shape.adjusted(3, 2, -3, -shape.height() / 2), radius - 3, radius - 3);
    }

    const QRectF text = shape.translated(0, down ? 1 : 0);
    // The caption follows the button's height: 11 points on a standard
    // button, smaller on the compact ones of a crowded window.
    QFont font = Font(std::clamp(shape.height() * 0.34, 8.0, 11.0), true);
    p.setFont(font);
    if (primary) {
        p.setPen(QColor(0x9A, 0x2A, 0x30, 110));
        p.drawText(text.translated(0, 1), Qt::AlignCenter, button.caption);
        p.setPen(Qt::white);
    } else {
        p.setPen(kHeading);
    }
    p.drawText(text, Qt::AlignCenter, button.caption);
    return QPixmap::fromImage(image);
}

QPixmap PaintTalkingToServer(QSize size)
{
    QImage image = blankImage(size);
    QPainter p(&image);
    p.setRenderHints(QPainter::Antialiasing | QPainter::TextAntialiasing);
    const QRectF pill = QRectF(image.rect()).adjusted(1, 1, -1, -1);
    QLinearGradient fill(0, pill.top(), 0, pill.bottom());
    fill.setColorAt(0, kBandFrom.lighter(115));
    fill.setColorAt(1, kBandTo);
    p.setPen(QPen(Qt::white, 2));
    p.setBrush(fill);
    p.drawRoundedRect(pill, pill.height() / 2, pill.height() / 2);
    // A ring of dots, fading round, like a turning wheel.
    const QPointF centre(pill.left() + pill.height() / 2 + 6, pill.center().y());
    p.setPen(Qt::NoPen);
    for (int i = 0; i < 8; ++i) {
        const double angle = i * 3.14159265358979 / 4;
        p.setBrush(QColor(255, 255, 255, 255 - i * 26));
        p.drawEllipse(centre + QPointF(std::cos(angle), std::sin(angle)) * 9, 2.6, 2.6);
    }
    p.setPen(Qt::white);
    p.setFont(Font(11, true));
    p.drawText(pill.adjusted(pill.height() + 8, 0, -12, 0), Qt::AlignVCenter | Qt::AlignLeft,
               QStringLiteral("Talking to the server..."));
    return QPixmap::fromImage(image);
}

QImage AppIconImage(int size)
{
    QImage image = blankImage(QSize(size, size));
    QPainter p(&image);
    p.setRenderHint(QPainter::Antialiasing);
    p.translate(size / 2.0, size / 2.0);
    // The badge's ring stays inside the square with a pixel to spare at every size.
    const double scale = (size / 2.0 - 1) / kBadgeRadius;
    p.scale(scale, scale);
    p.translate(-kBadgeCentre);
    paintBadge(p);
    return image;
}

QIcon AppIcon()
{
    QIcon icon;
    for (int size : {16, 32, 64})
        icon.addPixmap(QPixmap::fromImage(AppIconImage(size)));
    return icon;
}

}  // namespace skin
