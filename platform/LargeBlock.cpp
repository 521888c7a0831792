#include "platform/LargeBlock.h"

#include <new>

#ifdef __linux__
#include <cstdlib>
#include <sys/mman.h>
#endif

namespace {
// Below this a block is ordinary heap memory.
constexpr std::size_t kLarge = std::size_t(4) << 20;
constexpr std::size_t kHugePage = std::size_t(2) << 20;

std::size_t WholeHugePages(std::size_t vlBytes)
{
    return (vlBytes + kHugePage - 1) / kHugePage * kHugePage;
}
}

// Linux backs a block with huge pages when asked (transparent huge pages in
// "madvise" mode) or on its own ("always"), given a block on a huge-page
// boundary; elsewhere, or when the system declines, the block is ordinary
// memory all the same.
void* LargeBlock::Allocate(std::size_t vlBytes)
{
#ifdef __linux__
    if (vlBytes >= kLarge) {
        void* lcBlock = std::aligned_alloc(kHugePage, WholeHugePages(vlBytes));
        if (!lcBlock)
            throw std::bad_alloc();
        madvise(lcBlock, WholeHugePages(vlBytes), MADV_HUGEPAGE);
        return lcBlock;
    }
#endif
    return ::operator new(vlBytes);
}

void LargeBlock::Free(void* vcBlock, std::size_t vlBytes)
{
#ifdef __linux__
    if (vlBytes >= kLarge) {
        std::free(vcBlock);
        return;
    }
#endif
    ::operator delete(vcBlock);
}
