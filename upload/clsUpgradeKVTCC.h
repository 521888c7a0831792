#pragma once

#include "upload/clsUpgradeFile.h"

class clsUpgradeKVTCC : public clsUpgradeFile
{
public:
    clsUpgradeKVTCC() : clsUpgradeFile(UploadType::KVTCC) {}
};
