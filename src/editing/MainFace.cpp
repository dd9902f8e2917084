#include "editing/MainFace.h"

#include "core/twips.h"
#include "skin/SkinStyle.h"

#include <QPainter>
#include <QPainterPath>

QRect ArtworkRect(int x, int y, int width, int height)
{
    return QRect(TwipsToPixelsX(x * 15.0), TwipsToPixelsY(y * 15.0), TwipsToPixelsX(width * 15.0),
                 TwipsToPixelsY(height * 15.0));
}

namespace {
SkinLabel text(const char* name, QRect rect, double points = 9, bool bold = false, int align = Qt::AlignLeft | Qt::AlignVCenter)
{
    return {QString::fromLatin1(name), rect, LabelKind::Text, {}, points, bold, align};
}

// A fixed word in front of a measure; its name ends in "Caption".
SkinLabel caption(const char* words, QRect rect)
{
    return {QString::fromUtf8(words) + QStringLiteral("Caption"), rect, LabelKind::Text, QString::fromUtf8(words), 8, false, Qt::AlignLeft | Qt::AlignVCenter};
}

SkinLabel spot(const char* name, QRect rect, LabelKind kind = LabelKind::HotSpot, const char* caption = "")
{
    return {QString::fromLatin1(name), rect, kind, QString::fromUtf8(caption), 9, true,
            Qt::AlignLeft | Qt::AlignVCenter};
}

// A thin rule at the left, then a loudspeaker with one sound wave, in the wording's colour.
}  // namespace

QPixmap VolumeMark(QSize size)
{
    QPixmap mark(size);
    mark.fill(Qt::transparent);
    QPainter p(&mark);
    p.setRenderHint(QPainter::Antialiasing);
    const QColor ink = skin::TextColour();
    p.setPen(QPen(QColor(ink.red(), ink.green(), ink.blue(), 80), 1));
    p.drawLine(QPointF(0.5, 2), QPointF(0.5, size.height() - 2));
    const double mid = size.height() / 2.0, x = size.width() - 16.5;
    QPainterPath speaker;
    speaker.moveTo(x, mid - 2.5);
    speaker.lineTo(x + 3, mid - 2.5);
    speaker.lineTo(x + 7, mid - 6);
    speaker.lineTo(x + 7, mid + 6);
    speaker.lineTo(x + 3, mid + 2.5);
    speaker.lineTo(x, mid + 2.5);
    speaker.closeSubpath();
    p.setPen(Qt::NoPen);
    p.setBrush(ink);
    p.drawPath(speaker);
    p.setPen(QPen(ink, 1.3));
    p.setBrush(Qt::NoBrush);
    p.drawArc(QRectF(x + 5, mid - 4, 6, 8), -50 * 16, 100 * 16);
    p.drawArc(QRectF(x + 6, mid - 7, 10, 14), -50 * 16, 100 * 16);
    return mark;
}

SkinWindowDesc MainFace(bool recordMode)
{
    SkinWindowDesc d;
    d.name = QStringLiteral("frmMain");
    d.size = QSize(TwipsToPixelsX(6780), TwipsToPixelsY(3380));
    d.closeMark = true;
    d.minimizeMark = true;
    d.bodyRect = ArtworkRect(0, 0, 1, 1);  // no painted wording: the labels carry it
    d.buttons = {
        PlacedButton("cmdOpen", "Open", ArtworkRect(14, 178, 46, 34)),
        PlacedButton("cmdMyMusic", "Music", ArtworkRect(60, 178, 50, 34)),
        PlacedButton("cmdRip", "CD", ArtworkRect(110, 178, 38, 34)),
        PlacedButton("cmdRecord", "Rec", ArtworkRect(148, 178, 42, 34)),
        PlacedButton("cmdTrim", "Trim", ArtworkRect(190, 178, 44, 34)),
        PlacedButton("cmdReset", "Reset", ArtworkRect(234, 178, 48, 34)),
        PlacedButton("cmdPlay", "Play", ArtworkRect(282, 178, 44, 34)),
        PlacedButton("cmdStop", "Stop", ArtworkRect(326, 178, 44, 34)),
        PlacedButton("cmdSend", "Send", ArtworkRect(370, 178, 68, 34), ButtonLook::Primary),
    };
    if (recordMode) {
        d.heading = QStringLiteral("Record a sound");
        d.body = QStringLiteral("Press Start, then play your sound into the microphone or line in. Press Stop when it is done.");
        d.bodyRect = ArtworkRect(16, 76, 276, 60);
        d.buttons << PlacedButton("imgStartRecording", "Start", ArtworkRect(300, 96, 64, 34), ButtonLook::Primary)
                  << PlacedButton("imgStopRecording", "Stop", ArtworkRect(370, 96, 64, 34));
    }
    d.labels = {
        text("lblSoundFile", ArtworkRect(16, 80, 210, 16), 9.5, true),
        text("lblUsingTunnel", ArtworkRect(226, 80, 80, 16), 8),
        spot("lblFreeQuills", ArtworkRect(310, 80, 96, 16), LabelKind::Link, "Free quills:"),
        text("lblFreeQuillCount", ArtworkRect(406, 80, 30, 16), 9.5, true),
        caption("Song", ArtworkRect(16, 158, 30, 16)),
        text("lblSongLength", ArtworkRect(49, 158, 52, 16), 9),
        caption("Tone", ArtworkRect(104, 158, 30, 16)),
        text("lblToneLength", ArtworkRect(137, 158, 44, 16), 9),
        caption("Size", ArtworkRect(184, 158, 26, 16)),
        text("lblToneSize", ArtworkRect(212, 158, 38, 16), 9),
        caption("At", ArtworkRect(254, 158, 15, 16)),
        text("lblCurrentPosition", ArtworkRect(271, 158, 49, 16), 9),
        spot("imgZoom", ArtworkRect(322, 158, 35, 16), LabelKind::Link, "Zoom"),
        // The volume stands apart from the zoom link, behind a rule and its speaker mark.
        text("lblVolumeMark", ArtworkRect(358, 158, 20, 16)),
        spot("lblVolumeDown", ArtworkRect(379, 158, 8, 16), LabelKind::HotSpot, "\u2013"),
        spot("lblVolumeUp", ArtworkRect(428, 158, 11, 16), LabelKind::HotSpot, "+"),
        spot("cmdSignOut", ArtworkRect(300, 34, 66, 18), LabelKind::Link, "Sign out"),
        spot("lblSettings", ArtworkRect(16, 214, 40, 10)),
        spot("lblAbout", ArtworkRect(60, 214, 40, 10)),
        spot("lblLastURL", ArtworkRect(104, 214, 40, 10)),
        {QStringLiteral("lblStartRecording"), ArtworkRect(300, 132, 64, 14), LabelKind::Link, QStringLiteral("record"), 8,
         false, Qt::AlignCenter},
        {QStringLiteral("lblStopRecording"), ArtworkRect(370, 132, 64, 14), LabelKind::Link, QStringLiteral("end take"), 8,
         false, Qt::AlignCenter},
    };
    return d;
}
