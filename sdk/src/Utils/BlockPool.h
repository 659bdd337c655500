#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <vector>

namespace Zerlane::Utils {

// A few reusable memory blocks for samples. A block goes back to the pool when the last Pointer sharing it
// is gone, so a streaming node allocates nothing once the pool has warmed up (the library holds at most two
// undelivered samples per node, the application one or two more).
class BlockPool {
public:
    explicit BlockPool(std::size_t maxFreeBlocks = 4);

    // A block of at least `bytes` bytes, 64-byte aligned, contents undefined.
    std::shared_ptr<uint8_t> acquire(std::size_t bytes);
    std::size_t freeBlockCount() const;

private:
    struct Block {
        uint8_t* data = nullptr;
        std::size_t capacity = 0;
    };
    struct State {
        mutable std::mutex mutex;
        std::vector<Block> free;
        std::size_t maxFree = 4;
        ~State();
    };

    static void giveBack(const std::shared_ptr<State>& state, Block block);

    std::shared_ptr<State> m_state;
};

} // namespace Zerlane::Utils
