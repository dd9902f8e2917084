#include "CodePicture.h"

#include <QBuffer>
#include <QFont>
#include <QFontMetrics>
#include <QImage>
#include <QPainter>
#include <QRandomGenerator>
#include <mutex>

std::string CodePictureJpeg(const std::string& code)
{
    // Font handling is shared across threads; one picture at a time.
    static std::mutex drawing;
    std::lock_guard lock(drawing);

    const QString text = QString::fromStdString(code);
    QFont font(QStringLiteral("DejaVu Sans Mono"));
    font.setPixelSize(40);
    font.setBold(true);
    const QFontMetrics metrics(font);
    const int advance = metrics.horizontalAdvance(QLatin1Char('W')) + 6;
    const int width = 24 + advance * static_cast<int>(text.size());
    const int height = 72;

    QImage image(width, height, QImage::Format_RGB32);
    image.fill(QColor(250, 246, 232));
    QPainter p(&image);
    p.setRenderHint(QPainter::Antialiasing);
    QRandomGenerator random(static_cast<quint32>(qHash(text)));
    // A few faint strokes behind the letters: enough to stop a naive reader,
    // too light to trouble a person.
    for (int i = 0; i < 8; ++i) {
        p.setPen(QPen(QColor(200 + random.bounded(40), 200 + random.bounded(40), 220), 1.5));
        p.drawLine(random.bounded(width), random.bounded(height), random.bounded(width), random.bounded(height));
    }
    p.setFont(font);
    p.setPen(QColor(20, 30, 90));
    for (qsizetype i = 0; i < text.size(); ++i) {
        p.save();
        p.translate(12 + advance * static_cast<int>(i) + advance / 2, height / 2);
        p.rotate(random.bounded(-8, 9));
        const QString letter(text[i]);
        p.drawText(-metrics.horizontalAdvance(letter) / 2, metrics.ascent() / 2 - 2, letter);
        p.restore();
    }
    p.end();

    QByteArray jpeg;
    QBuffer buffer(&jpeg);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "JPEG", 90);
    return jpeg.toStdString();
}
