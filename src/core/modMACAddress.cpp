#include "core/modMACAddress.h"

#include <QNetworkInterface>

QString FormatAddress(const QByteArray& bytes, const QString& separator)
{
    if (bytes.size() != 6)
        return {};
    QStringList parts;
    for (char b : bytes)
        parts << QStringLiteral("%1").arg(static_cast<unsigned char>(b), 2, 16, QLatin1Char('0')).toUpper();
    return parts.join(separator);
}

QByteArray FirstAdapterAddress(const QList<NetworkAdapter>& adapters)
{
    for (const NetworkAdapter& adapter : adapters) {
        if (adapter.loopback)
            continue;
        const QByteArray bytes = QByteArray::fromHex(adapter.hardwareAddress.toLatin1());
        if (bytes.size() == 6 && bytes != QByteArray(6, '\0'))
            return bytes;
    }
    return QByteArray(6, '\0');
}

QString GetMACAddress()
{
    QList<NetworkAdapter> adapters;
    for (const QNetworkInterface& nic : QNetworkInterface::allInterfaces())
        adapters.append({nic.hardwareAddress(), nic.flags().testFlag(QNetworkInterface::IsLoopBack)});
    return FormatAddress(FirstAdapterAddress(adapters), {});
}
