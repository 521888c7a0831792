#include "upload/clsUpgradeFile.h"

const std::array<clsUpgradeFile::Row, 8>& clsUpgradeFile::Table()
{
    static const std::array<Row, 8> scTable = {{
        {UploadType::KVTCC, "KVT_CC", "KVT File Reader", 0, "KVT file(*.kvt)|*.kvt", "--kvt"},
        {UploadType::SSL, "SSL", "SSL File Reader", 1, "SSL file(*.ssl)|*.ssl", "--ssl"},
        {UploadType::SFL, "SFL", "SFL File Reader", 2, "SFL file(*.sfl)|*.sfl", "--sfl"},
        {UploadType::USL, "USL", "USL File Reader", 3, "USL file(*.usl)|*.usl", "--usl"},
        {UploadType::UFL, "UFL", "UFL File Reader", 4, "UFL file(*.ufl)|*.ufl", "--ufl"},
        {UploadType::KVTSA, "KVT_SA", "KVT File Reader", 10, "KVT file(*.kvt_sa)|*.kvt_sa", "--kvt-sa"},
        {UploadType::KVTMD, "KVT_MD", "KVT File Reader", 11, "KVT file(*.kvt_md)|*.kvt_md", "--kvt-md"},
        {UploadType::KVTSND, "KVT_SND", "KVT File Reader", 12, "KVT file(*.kvt_snd)|*.kvt_snd", "--kvt-snd"},
    }};
    return scTable;
}

// The table is in the order of the enumeration.
const clsUpgradeFile::Row& clsUpgradeFile::Of(UploadType vType)
{
    return Table()[size_t(vType)];
}

bool clsUpgradeFile::SaveToFile(const QString& vsFileName, clsRecordCollection& rcRecords)
{
    (void)vsFileName;
    (void)rcRecords;
    return false;
}
