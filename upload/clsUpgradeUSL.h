#pragma once

#include "upload/clsUpgradeFile.h"

class clsUpgradeUSL : public clsUpgradeFile
{
public:
    clsUpgradeUSL() : clsUpgradeFile(UploadType::USL) {}
};
