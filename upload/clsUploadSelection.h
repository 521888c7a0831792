#pragma once

#include "upload/clsUpgradeFile.h"

#include <array>
#include <vector>

// The tick boxes of the upload pages (chkSelectFileSSL … chkSelectKVTSND):
// which files the next upload sends. Kept by the core so the window and the
// command line tick the same state; the Memory Display firmware has no box.
class clsUploadSelection
{
public:
    // The four databases and the three display images, each in the order they are sent.
    static const std::vector<UploadType>& Databases();
    static const std::vector<UploadType>& DisplayImages();

    bool Ticked(UploadType vType) const { return mcTicked[size_t(vType)]; }
    void SetTicked(UploadType vType, bool vbTicked) { mcTicked[size_t(vType)] = vbTicked; }
    bool AnyTicked(const std::vector<UploadType>& vcTypes) const;

private:
    std::array<bool, 8> mcTicked{};
};
