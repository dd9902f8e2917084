#include "core/modCommon.h"
#include "core/modEncryption.h"

#include <QApplication>

int main(int argc, char** argv)
{
    QApplication app(argc, argv);
    QApplication::setApplicationName(kAppName);
    InitMachineKey();
    return 0;
}
