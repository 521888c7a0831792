#include "platform/Cp1252.h"

#include <array>

namespace {
// 0x80..0x9F; 0 marks the five unassigned positions, decoded as the C1 control of the same value.
constexpr std::array<char16_t, 32> kHighControls = {
    0x20AC, 0, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021,
    0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0, 0x017D, 0,
    0, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014,
    0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0, 0x017E, 0x0178,
};

char EncodeChar(char16_t vChar)
{
    if (vChar < 0x80 || (vChar >= 0xA0 && vChar <= 0xFF))
        return char(vChar);
    for (int i = 0; i < 32; ++i) {
        if (kHighControls[i] == vChar || (kHighControls[i] == 0 && vChar == 0x80 + i))
            return char(0x80 + i);
    }
    return '?';
}
}

namespace Cp1252 {
QChar DecodeByte(unsigned char vbyValue)
{
    if (vbyValue >= 0x80 && vbyValue < 0xA0 && kHighControls[vbyValue - 0x80] != 0)
        return QChar(kHighControls[vbyValue - 0x80]);
    return QChar(char16_t(vbyValue));
}

QString Decode(const QByteArray& vcBytes)
{
    QString lsText(vcBytes.size(), Qt::Uninitialized);
    QChar* lcOut = lsText.data();
    for (char c : vcBytes)
        *lcOut++ = DecodeByte(static_cast<unsigned char>(c));
    return lsText;
}

QByteArray Encode(const QString& vsText)
{
    QByteArray lcBytes(vsText.size(), Qt::Uninitialized);
    char* lcOut = lcBytes.data();
    for (QChar c : vsText)
        *lcOut++ = EncodeChar(c.unicode());
    return lcBytes;
}
}
