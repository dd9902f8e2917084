#include "library/LibraryFile.h"

#include "core/CError.h"

#include <QDomDocument>
#include <QFile>
#include <QSaveFile>
#include <QTextStream>
#include <QXmlStreamReader>

LibraryContents ReadLibrary(const QString& path)
{
    LibraryContents contents;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        contents.error = file.errorString();
        return contents;
    }
    QXmlStreamReader xml(&file);
    int depth = 0;
    while (!xml.atEnd()) {
        switch (xml.readNext()) {
        case QXmlStreamReader::StartElement:
            // A child of the root element.
            if (++depth == 2 && xml.attributes().hasAttribute(QStringLiteral("Path")))
                contents.paths << xml.attributes().value(QStringLiteral("Path")).toString();
            break;
        case QXmlStreamReader::EndElement:
            --depth;
            break;
        default:
            break;
        }
    }
    if (xml.hasError())
        contents.error = xml.errorString();
    return contents;
}

bool WriteLibraryLine(const QString& path, const QString& line)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly | QIODevice::Truncate | QIODevice::Text) &&
           file.write(line.toUtf8() + '\n') > 0;
}

void SaveLibrary(const QDomDocument& library, const QString& path)
{
    // An empty root is written out in full, as the empty library's line has it.
    QByteArray text = kSearchEmptyLibrary.toUtf8();
    if (library.documentElement().hasChildNodes()) {
        text = QByteArrayLiteral("<?xml version=\"1.0\"?>");
        QTextStream stream(&text, QIODevice::Append);
        library.documentElement().save(stream, -1);
    }
    text += '\n';
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(text) != text.size() || !file.commit())
        throw CError(ErrNo::PathFileAccess, file.errorString());
}

bool StorablePath(const QString& path)
{
    if (path.isEmpty())
        return false;
    for (qsizetype i = 0; i < path.size(); ++i) {
        const QChar c = path[i];
        if (c.isHighSurrogate() && i + 1 < path.size() && path[i + 1].isLowSurrogate()) {
            ++i;
            continue;
        }
        if (c.isSurrogate() || c.unicode() < 0x20 || c.unicode() == 0xFFFE || c.unicode() == 0xFFFF)
            return false;
    }
    return true;
}
