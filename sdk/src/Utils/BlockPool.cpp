#include "BlockPool.h"

#include <cstdlib>
#include <new>

namespace Zerlane::Utils {

namespace {
constexpr std::size_t Alignment = 64;

std::size_t roundUp(std::size_t bytes)
{
    return (bytes + Alignment - 1) / Alignment * Alignment;
}
} // namespace

BlockPool::State::~State()
{
    for (const Block& block : free)
        std::free(block.data);
}

BlockPool::BlockPool(std::size_t maxFreeBlocks) : m_state(std::make_shared<State>())
{
    m_state->maxFree = maxFreeBlocks;
}

std::shared_ptr<uint8_t> BlockPool::acquire(std::size_t bytes)
{
    Block block;
    std::vector<Block> tooSmall;
    {
        std::lock_guard<std::mutex> lock(m_state->mutex);
        for (std::size_t i = 0; i < m_state->free.size(); ++i) {
            if (m_state->free[i].capacity >= bytes) {
                block = m_state->free[i];
                m_state->free.erase(m_state->free.begin() + std::ptrdiff_t(i));
                break;
            }
        }
        // The frame size grew: blocks of the old size would only sit in the pool.
        if (!block.data)
            tooSmall.swap(m_state->free);
    }
    for (const Block& small : tooSmall)
        std::free(small.data);
    if (!block.data) {
        block.capacity = roundUp(bytes ? bytes : 1);
        block.data = static_cast<uint8_t*>(std::aligned_alloc(Alignment, block.capacity));
        if (!block.data)
            throw std::bad_alloc();
    }
    std::shared_ptr<State> state = m_state;
    return std::shared_ptr<uint8_t>(block.data, [state, block](uint8_t*) { giveBack(state, block); });
}

void BlockPool::giveBack(const std::shared_ptr<State>& state, Block block)
{
    {
        std::lock_guard<std::mutex> lock(state->mutex);
        if (state->free.size() < state->maxFree) {
            state->free.push_back(block);
            return;
        }
    }
    std::free(block.data);
}

std::size_t BlockPool::freeBlockCount() const
{
    std::lock_guard<std::mutex> lock(m_state->mutex);
    return m_state->free.size();
}

} // namespace Zerlane::Utils
