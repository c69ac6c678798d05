#pragma once

// Values worked out from whole chunks of a SharedMap, remembered per chunk.
//
// A search of every record of a large map touches memory all over the heap;
// a summary of each chunk, kept while the chunk is unchanged, lets the search
// read a few compact arrays instead. The summaries hold their chunks, so a
// held chunk is cloned before any write and its address keeps naming the
// same records: a summary can never be stale. Only chunks written since the
// last visit are summarised again. Safe on any thread; one visit at a time.

#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <unordered_map>
#include <utility>

#include "core/model/shared_containers.h"

namespace copperwick {

template <typename Map, typename Summary>
class ChunkSummaries {
    using Chunk = typename Map::ChunkTable;

  public:
    explicit ChunkSummaries(std::function<Summary(const Chunk&)> summarise)
        : m_summarise(std::move(summarise)) {}

    // Calls `visit(summary)` for every chunk of `map` that holds records.
    template <typename Visit>
    void each(const Map& map, Visit&& visit) {
        std::lock_guard lock(m_mutex);
        ++m_visits;
        std::size_t visited = 0;
        for (std::size_t c = 0; c < Map::chunkCount(); ++c) {
            auto chunk = map.chunk(c);
            if (!chunk || chunk->empty())
                continue;
            ++visited;
            auto [it, fresh] = m_entries.try_emplace(chunk.get());
            Entry& entry = it->second;
            if (fresh) {
                entry.summary = m_summarise(*chunk);
                entry.chunk = std::move(chunk);
            }
            entry.lastVisit = m_visits;
            visit(std::as_const(entry.summary));
        }
        // Chunks this map no longer has go at once: holding them would keep
        // their records alive. Maps that share most chunks, such as the live
        // ledger and a copy being changed, find nearly all theirs again.
        if (m_entries.size() > visited) {
            std::erase_if(m_entries,
                          [&](const auto& entry) { return entry.second.lastVisit != m_visits; });
        }
    }

  private:
    struct Entry {
        std::shared_ptr<const Chunk> chunk;
        Summary summary;
        std::uint64_t lastVisit = 0;
    };

    std::function<Summary(const Chunk&)> m_summarise;
    std::mutex m_mutex;
    std::unordered_map<const Chunk*, Entry> m_entries;
    std::uint64_t m_visits = 0;
};

}  // namespace copperwick
