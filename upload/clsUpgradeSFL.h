#pragma once

#include "upload/clsUpgradeFile.h"

class clsUpgradeSFL : public clsUpgradeFile
{
public:
    clsUpgradeSFL() : clsUpgradeFile(UploadType::SFL) {}
};
