#pragma once

// Values worked out from whole chunks of a SharedMap, remembered per chunk.
//
// A search of every record of a large map touches memory all over the heap;
// a summary of each chunk, kept while the chunk is unchanged, lets the search
// read a few compact arrays instead. The summaries hold their chunks, so a
// held chunk is cloned before any write and its address keeps naming the
// same records: a summary can never be stale. Only chunks written since the
// last visit are summarised again. Safe on any thread; one visit at a time.
// `summarise` may run on two threads at once, each on its own chunks.

#include <atomic>
#include <cstdint>
#include <exception>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <system_error>
#include <thread>
#include <unordered_map>
#include <utility>
#include <vector>

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
        std::vector<Entry*> visiting;
        std::vector<Entry*> fresh;
        visiting.reserve(Map::chunkCount());
        for (std::size_t c = 0; c < Map::chunkCount(); ++c) {
            auto chunk = map.chunk(c);
            if (!chunk || chunk->empty())
                continue;
            auto [it, added] = m_entries.try_emplace(chunk.get());
            Entry& entry = it->second;
            if (added) {
                entry.chunk = std::move(chunk);
                fresh.push_back(&entry);
            }
            entry.lastVisit = m_visits;
            visiting.push_back(&entry);
        }
        summarise(fresh);
        for (const Entry* entry : visiting)
            visit(std::as_const(*entry->summary));
        // Chunks this map no longer has go at once: holding them would keep
        // their records alive. Maps that share most chunks, such as the live
        // ledger and a copy being changed, find nearly all theirs again.
        if (m_entries.size() > visiting.size()) {
            std::erase_if(m_entries,
                          [&](const auto& entry) { return entry.second.lastVisit != m_visits; });
        }
    }

  private:
    struct Entry {
        std::shared_ptr<const Chunk> chunk;
        std::optional<Summary> summary;
        std::uint64_t lastVisit = 0;
    };

    // A first visit (every visit of a command, which loads the ledger
    // afresh) summarises thousands of chunks, each read from memory that is
    // nowhere near the last. A second core halves that wait; a few chunks
    // aren't worth a thread.
    void summarise(const std::vector<Entry*>& fresh) {
        constexpr std::size_t kWorthAThread = 256;
        std::atomic<std::size_t> next = 0;
        std::mutex failureMutex;
        std::exception_ptr failure;
        const auto work = [&] {
            try {
                for (std::size_t i = next++; i < fresh.size(); i = next++)
                    fresh[i]->summary.emplace(m_summarise(*fresh[i]->chunk));
            } catch (...) {
                next = fresh.size();
                std::lock_guard failed(failureMutex);
                if (!failure)
                    failure = std::current_exception();
            }
        };
        {
            std::optional<std::jthread> helper;
            if (fresh.size() >= kWorthAThread && std::thread::hardware_concurrency() > 1) {
                try {
                    helper.emplace(work);
                } catch (const std::system_error&) {
                    // No thread to be had: this one does it all.
                }
            }
            work();
        }
        if (failure) {
            // A chunk without its summary must not be found again.
            std::erase_if(m_entries, [](const auto& entry) { return !entry.second.summary; });
            std::rethrow_exception(failure);
        }
    }

    std::function<Summary(const Chunk&)> m_summarise;
    std::mutex m_mutex;
    std::unordered_map<const Chunk*, Entry> m_entries;
    std::uint64_t m_visits = 0;
};

}  // namespace copperwick
