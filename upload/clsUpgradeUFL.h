#pragma once

#include "upload/clsUpgradeFile.h"

class clsUpgradeUFL : public clsUpgradeFile
{
public:
    clsUpgradeUFL() : clsUpgradeFile(UploadType::UFL) {}
};
