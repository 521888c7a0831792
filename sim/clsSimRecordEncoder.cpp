#include "sim/clsSimRecordEncoder.h"

#include <cmath>

namespace {

void Put16(clsSimRecordEncoder::Bytes& rcBytes, int vlOffset, quint16 vlValue)
{
    rcBytes[size_t(vlOffset)] = quint8(vlValue & 0xFF);
    rcBytes[size_t(vlOffset) + 1] = quint8(vlValue >> 8);
}

// The display keeps bit 31 of its 32-bit fields clear.
void Put31(clsSimRecordEncoder::Bytes& rcBytes, int vlOffset, quint32 vlValue)
{
    vlValue &= 0x7FFFFFFFu;
    for (int i = 0; i < 4; ++i)
        rcBytes[size_t(vlOffset + i)] = quint8(vlValue >> (8 * i));
}

} // namespace

// Each part is cut to its bits, so a time or date the display could not hold
// still packs into sixteen bits (an unset one gives 0 parts).
quint16 clsSimRecordEncoder::PackTime(const QTime& vcTime)
{
    if (!vcTime.isValid())
        return 0;
    return quint16(((unsigned(vcTime.hour()) & 0x1F) << 11) | ((unsigned(vcTime.minute()) & 0x3F) << 5) |
                   (unsigned(vcTime.second() / 2) & 0x1F));
}

quint16 clsSimRecordEncoder::PackDate(const QDate& vcDate)
{
    if (!vcDate.isValid())
        return 0;
    return quint16(((unsigned(vcDate.year() - 2000) & 0x7F) << 9) | ((unsigned(vcDate.month()) & 0x0F) << 5) |
                   (unsigned(vcDate.day()) & 0x1F));
}

quint32 clsSimRecordEncoder::EncodeLatitude(double vdDegrees)
{
    return quint32(std::lround((vdDegrees + 90.0) * 600000.0));
}

quint32 clsSimRecordEncoder::EncodeLongitude(double vdDegrees)
{
    return quint32(std::lround((vdDegrees + 180.0) * 600000.0));
}

clsSimRecordEncoder::Bytes clsSimRecordEncoder::Encode(const clsSimRecordFields& vcFields)
{
    // Fields a kind does not use keep the erased state of the flash.
    Bytes lcBytes;
    lcBytes.fill(0xFF);
    const quint8 lbyType = vcFields.RecordType;
    lcBytes[17] = lbyType;
    lcBytes[14] = vcFields.TripType;

    if (vcFields.HasFix) {
        Put16(lcBytes, 4, PackDate(vcFields.Date));
        Put31(lcBytes, 6, EncodeLatitude(vcFields.Latitude));
        Put31(lcBytes, 10, EncodeLongitude(vcFields.Longitude));
        lcBytes[15] = quint8(((vcFields.Direction % 360 + 360) % 360) / 2);
        Put16(lcBytes, 2, PackTime(vcFields.StopTime));
        if (lbyType == 2)
            Put16(lcBytes, 0, PackTime(vcFields.StartTime));
    } else {
        // No position: the coordinates are zero, which is how the PC tells a missing fix.
        Put16(lcBytes, 4, 0);
        Put31(lcBytes, 6, 0);
        Put31(lcBytes, 10, 0);
        lcBytes[15] = 0;
        if (lbyType == 2 && vcFields.DriveTimeMarker) {
            Put16(lcBytes, 0, PackTime(vcFields.DriveTime));
            lcBytes[2] = 0x00;
            lcBytes[3] = 0xF8;
        }
    }

    switch (lbyType) {
    case 3:
        lcBytes[16] = vcFields.Speed;
        Put16(lcBytes, 18, vcFields.FrequencyOffset);
        lcBytes[20] = vcFields.FrequencyBand;
        lcBytes[21] = vcFields.Amplitude;
        break;
    case 4:
    case 5:
        lcBytes[16] = vcFields.Speed;
        break;
    case 8: {
        // The counter before the correction travels in bytes 0-1, 15 and 16, high bit of 16 clear.
        const quint32 llPrevious = quint32(vcFields.PreviousKm) & 0x7FFFFFFFu;
        Put16(lcBytes, 0, quint16(llPrevious & 0xFFFF));
        lcBytes[15] = quint8(llPrevious >> 16);
        lcBytes[16] = quint8(llPrevious >> 24);
        Put31(lcBytes, 18, quint32(vcFields.KmCounter));
        Put16(lcBytes, 22, vcFields.TankReceipt);
        break;
    }
    case 2:
    case 6:
    case 7:
        Put31(lcBytes, 18, quint32(vcFields.KmCounter));
        Put16(lcBytes, 22, vcFields.TankReceipt);
        break;
    default:
        break;
    }
    return lcBytes;
}
