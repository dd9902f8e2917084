#pragma once
// The picture of a sign-up code: the code in large dark letters on a light,
// lightly patterned ground, as a JPEG. Needs a QGuiApplication for its fonts.
#include <string>

std::string CodePictureJpeg(const std::string& code);
