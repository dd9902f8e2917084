#pragma once
// Text on the wire. The program sends its values as UTF-8 in URLs and may send
// Windows-1252 in form bodies; it reads replies as Windows-1252. The store
// keeps UTF-8.
#include <string>

namespace text {
// A wire value as UTF-8: valid UTF-8 stays, anything else is read as Windows-1252.
std::string FromWire(const std::string& bytes);
// UTF-8 as Windows-1252 bytes; a character the code page lacks becomes "?".
std::string ToWire(const std::string& utf8);
// A value that can stand as one field of a comma reply: no "," and no line breaks.
std::string Field(const std::string& value);
// Only the characters 0-9, and at least one.
bool IsDigits(const std::string& value);
// &, <, >, " escaped for HTML.
std::string Html(const std::string& value);
std::string Trim(const std::string& value);
}  // namespace text
