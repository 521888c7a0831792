#include "cli/clsPortList.h"

#include <QSerialPortInfo>
#include <QStringList>
#include <algorithm>

QList<clsPortList::Port> clsPortList::Available()
{
    QList<Port> lcPorts;
    for (const QSerialPortInfo& lcInfo : QSerialPortInfo::availablePorts()) {
        Port lcPort;
        lcPort.Path = lcInfo.systemLocation();
        lcPort.HasIds = lcInfo.hasVendorIdentifier() && lcInfo.hasProductIdentifier();
        lcPort.Vendor = lcInfo.vendorIdentifier();
        lcPort.Product = lcInfo.productIdentifier();
        lcPort.Description = lcInfo.description();
        lcPort.Serial = lcInfo.serialNumber();
        lcPorts << lcPort;
    }
    std::sort(lcPorts.begin(), lcPorts.end(), [](const Port& a, const Port& b) { return a.Path < b.Path; });
    return lcPorts;
}

QString clsPortList::Listing(const QList<Port>& vcPorts)
{
    if (vcPorts.isEmpty())
        return QStringLiteral("No serial ports found.\n");
    QList<QStringList> lcRows{{"PORT", "ID", "DESCRIPTION", "SERIAL", ""}};
    for (const Port& lcPort : vcPorts) {
        const QString lsIds = lcPort.HasIds ? QStringLiteral("%1:%2").arg(lcPort.Vendor, 4, 16, QLatin1Char('0'))
                                                  .arg(lcPort.Product, 4, 16, QLatin1Char('0'))
                                            : QStringLiteral("-");
        lcRows << QStringList{lcPort.Path, lsIds, lcPort.Description.isEmpty() ? QStringLiteral("-") : lcPort.Description,
                              lcPort.Serial.isEmpty() ? QStringLiteral("-") : lcPort.Serial,
                              lcPort.IsKvt() ? QStringLiteral("<- KVT USB interface") : QString()};
    }
    QList<int> lcWidths(lcRows.first().size(), 0);
    for (const QStringList& lcRow : lcRows)
        for (int c = 0; c < lcRow.size(); ++c)
            lcWidths[c] = std::max(lcWidths[c], int(lcRow[c].size()));
    QString lsText;
    for (const QStringList& lcRow : lcRows) {
        QString lsLine;
        for (int c = 0; c < lcRow.size(); ++c)
            lsLine += lcRow[c].leftJustified(lcWidths[c] + 2);
        lsText += lsLine.trimmed() + QLatin1Char('\n');
    }
    return lsText;
}
