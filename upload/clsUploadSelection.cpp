#include "upload/clsUploadSelection.h"

const std::vector<UploadType>& clsUploadSelection::Databases()
{
    static const std::vector<UploadType> scTypes = {UploadType::SSL, UploadType::SFL, UploadType::USL,
                                                    UploadType::UFL};
    return scTypes;
}

const std::vector<UploadType>& clsUploadSelection::DisplayImages()
{
    static const std::vector<UploadType> scTypes = {UploadType::KVTCC, UploadType::KVTSA, UploadType::KVTSND};
    return scTypes;
}

bool clsUploadSelection::AnyTicked(const std::vector<UploadType>& vcTypes) const
{
    for (const UploadType lType : vcTypes)
        if (Ticked(lType))
            return true;
    return false;
}
