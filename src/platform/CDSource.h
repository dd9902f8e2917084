#pragma once
// Where the CD comes from. A person without a drive names a disc image (a CUE
// sheet beside its BIN) in the setting "CDImage";
// otherwise it is the first optical drive. The grabber and the media check
// both ask here, so an image is read exactly as a disc would be.
#include <QString>

// A test's choice; empty gives the setting's, then the drive's.
void SetCDImage(const QString& cueSheet);

// What libcdio is to open: the image's CUE sheet or the first drive's device;
// empty when there is neither.
QString CDSourcePath();
bool CDSourceIsImage();

