#pragma once

#include "upload/clsUpgradeFile.h"

class clsUpgradeSSL : public clsUpgradeFile
{
public:
    clsUpgradeSSL() : clsUpgradeFile(UploadType::SSL) {}
};
