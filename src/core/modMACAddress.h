#pragma once
// The address of the first network adapter, which ties the machine key to
// this computer.
#include <QByteArray>
#include <QList>
#include <QString>

struct NetworkAdapter {
    QString hardwareAddress;  // as the system writes it, "AA:BB:CC:DD:EE:FF"
    bool loopback = false;
};

// Twelve upper-case hexadecimal digits; "000000000000" when no adapter has one.
QString GetMACAddress();
// The six bytes of the first non-loopback adapter with a hardware address.
QByteArray FirstAdapterAddress(const QList<NetworkAdapter>& adapters);
// "" unless bytes holds exactly six.
QString FormatAddress(const QByteArray& bytes, const QString& separator);
