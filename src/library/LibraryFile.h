#pragma once
// The library file "MyMusic.xml": one declaration, the root Quillotone and,
// side by side in the order found, one empty Folder element a folder with its
// Path. The file names folders, never songs.
#include <QString>
#include <QStringList>

class QDomDocument;

// The empty library as the search writes it, and as the start-up writes it
// when the user declines the search (with a blank before "?>"); readers take both.
inline const QString kSearchEmptyLibrary = QStringLiteral("<?xml version=\"1.0\"?><Quillotone></Quillotone>");
inline const QString kDeclinedEmptyLibrary = QStringLiteral("<?xml version=\"1.0\" ?><Quillotone></Quillotone>");

struct LibraryContents {
    QStringList paths;  // every Path, in file order, duplicates and all
    QString error;      // empty when the whole file was read
};

// Reads the Path of each child of the root, up to the end of the file or up to
// the first fault: a truncated file still gives all of its whole entries.
LibraryContents ReadLibrary(const QString& path);

// Writes a text file of the one line, replacing what was there.
bool WriteLibraryLine(const QString& path, const QString& line);

// Writes the document whole, as one line with no added white space, under a
// temporary name that then replaces the file: a save cut short leaves the
// last one. Throws CError when the file cannot be written.
void SaveLibrary(const QDomDocument& library, const QString& path);

// A path can stand in the file when XML can hold each of its characters.
bool StorablePath(const QString& path);
