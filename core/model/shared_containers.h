#pragma once

// Copy-on-write containers that make copying a Ledger cheap.
//
// Every change to the ledger copies it first (see LedgerRuntime), so a copy
// must cost next to nothing and a one-record edit must not touch the others.
// Records sit behind shared_ptr<const T>; containers hold those pointers behind
// one more shared handle. Copying a container copies the handle. Writing to a
// container whose handle is shared clones the handle's contents (pointers only,
// never records), and replaces just the written record. SharedMap splits its
// table into fixed chunks so that one edit clones one chunk, not the table.
//
// Values, not objects: copies never observe each other's changes. Like any
// standard container, one instance is not safe to write from two threads; two
// copies may be used from two threads freely.

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <iterator>
#include <memory>
#include <utility>
#include <vector>

namespace copperwick {

// One shared, immutable value, cloned when written.
template <typename T>
class Box {
  public:
    Box() : m_value(std::make_shared<const T>()) {}
    Box(T value)
        : m_value(std::make_shared<const T>(std::move(value))) {}  // NOLINT: implicit on purpose

    [[nodiscard]] const T& get() const { return *m_value; }
    const T& operator*() const { return *m_value; }
    const T* operator->() const { return m_value.get(); }

    void set(T value) { m_value = std::make_shared<const T>(std::move(value)); }
    template <typename F>
    void update(F&& change) {
        T copy = *m_value;
        std::forward<F>(change)(copy);
        set(std::move(copy));
    }

    [[nodiscard]] bool sharesStorageWith(const Box& other) const {
        return m_value == other.m_value;
    }
    friend bool operator==(const Box& a, const Box& b) {
        return a.m_value == b.m_value || *a.m_value == *b.m_value;
    }

  private:
    std::shared_ptr<const T> m_value;
};

// An array of records in a set order.
template <typename T>
class SharedVector {
    using Element = std::shared_ptr<const T>;
    using Storage = std::vector<Element>;

  public:
    class const_iterator {
      public:
        using iterator_category = std::random_access_iterator_tag;
        using value_type = T;
        using difference_type = std::ptrdiff_t;
        using pointer = const T*;
        using reference = const T&;

        const_iterator() = default;
        explicit const_iterator(typename Storage::const_iterator it) : m_it(it) {}
        reference operator*() const { return **m_it; }
        pointer operator->() const { return m_it->get(); }
        reference operator[](difference_type n) const { return *m_it[n]; }
        const_iterator& operator++() {
            ++m_it;
            return *this;
        }
        const_iterator operator++(int) { return const_iterator(m_it++); }
        const_iterator& operator--() {
            --m_it;
            return *this;
        }
        const_iterator operator--(int) { return const_iterator(m_it--); }
        const_iterator& operator+=(difference_type n) {
            m_it += n;
            return *this;
        }
        const_iterator& operator-=(difference_type n) {
            m_it -= n;
            return *this;
        }
        friend const_iterator operator+(const_iterator a, difference_type n) { return a += n; }
        friend const_iterator operator+(difference_type n, const_iterator a) { return a += n; }
        friend const_iterator operator-(const_iterator a, difference_type n) { return a -= n; }
        friend difference_type operator-(const const_iterator& a, const const_iterator& b) {
            return a.m_it - b.m_it;
        }
        friend auto operator<=>(const const_iterator&, const const_iterator&) = default;
        friend bool operator==(const const_iterator&, const const_iterator&) = default;

      private:
        typename Storage::const_iterator m_it;
    };

    SharedVector() = default;
    SharedVector(std::initializer_list<T> items) : SharedVector(std::vector<T>(items)) {}
    explicit SharedVector(std::vector<T> items) {
        auto storage = std::make_shared<Storage>();
        storage->reserve(items.size());
        for (auto& item : items)
            storage->push_back(std::make_shared<const T>(std::move(item)));
        m_items = std::move(storage);
    }

    [[nodiscard]] std::size_t size() const { return m_items ? m_items->size() : 0; }
    [[nodiscard]] bool empty() const { return size() == 0; }
    const T& operator[](std::size_t i) const { return *(*m_items)[i]; }
    [[nodiscard]] const T& front() const { return *m_items->front(); }
    [[nodiscard]] const T& back() const { return *m_items->back(); }
    [[nodiscard]] const_iterator begin() const { return const_iterator(storage().begin()); }
    [[nodiscard]] const_iterator end() const { return const_iterator(storage().end()); }

    void push_back(T item) { writable().push_back(std::make_shared<const T>(std::move(item))); }
    void insert(std::size_t position, T item) {
        auto& items = writable();
        items.insert(items.begin() + static_cast<std::ptrdiff_t>(position),
                     std::make_shared<const T>(std::move(item)));
    }
    void set(std::size_t i, T item) { writable()[i] = std::make_shared<const T>(std::move(item)); }
    template <typename F>
    void update(std::size_t i, F&& change) {
        T copy = (*this)[i];
        std::forward<F>(change)(copy);
        set(i, std::move(copy));
    }
    void erase(std::size_t i) {
        auto& items = writable();
        items.erase(items.begin() + static_cast<std::ptrdiff_t>(i));
    }
    // Removes every record for which `pred` holds; returns how many went.
    template <typename P>
    std::size_t eraseIf(P&& pred) {
        if (empty())
            return 0;
        bool any = false;
        for (const auto& e : *m_items)
            any = any || pred(*e);
        if (!any)
            return 0;
        auto& items = writable();
        const auto before = items.size();
        std::erase_if(items, [&](const Element& e) { return pred(*e); });
        return before - items.size();
    }
    void clear() { m_items.reset(); }

    [[nodiscard]] std::vector<T> toVector() const { return std::vector<T>(begin(), end()); }
    // The stored record itself: equal pointers mean shared storage.
    [[nodiscard]] const T* address(std::size_t i) const { return (*m_items)[i].get(); }

    friend bool operator==(const SharedVector& a, const SharedVector& b) {
        if (a.m_items == b.m_items)
            return true;
        if (a.size() != b.size())
            return false;
        for (std::size_t i = 0; i < a.size(); ++i) {
            if (a.address(i) != b.address(i) && !(a[i] == b[i]))
                return false;
        }
        return true;
    }

  private:
    const Storage& storage() const {
        static const Storage kEmpty;
        return m_items ? *m_items : kEmpty;
    }
    // Our own array, cloned first when another copy still points at it.
    Storage& writable() {
        if (!m_items) {
            m_items = std::make_shared<Storage>();
        } else if (m_items.use_count() > 1) {
            m_items = std::make_shared<Storage>(*m_items);
        }
        return *m_items;
    }

    std::shared_ptr<Storage> m_items;
};

// A table of records by key. The hash picks a record's chunk; within its
// chunk the records sit in a short array in key order. An array is one
// allocation to clone, free or read straight through, where a node per
// record costs an allocation each and scatters a chunk over the heap.
template <typename K, typename V, typename Hash = std::hash<K>>
class SharedMap {
    static constexpr std::size_t kChunkCount = 4096;
    using Element = std::shared_ptr<const V>;
    using Entry = std::pair<K, Element>;
    using Chunk = std::vector<Entry>;  // in key order, each key once
    struct Table {
        std::array<std::shared_ptr<Chunk>, kChunkCount> chunks;
        std::size_t size = 0;
    };

  public:
    using ChunkTable = Chunk;

    // Visits records chunk by chunk, and within a chunk in key order. The
    // chunks' order is the hash's; callers that show an order sort.
    class const_iterator {
      public:
        using iterator_category = std::forward_iterator_tag;
        using value_type = V;
        using difference_type = std::ptrdiff_t;
        using pointer = const V*;
        using reference = const V&;

        const_iterator() = default;
        reference operator*() const { return *m_it->second; }
        pointer operator->() const { return m_it->second.get(); }
        [[nodiscard]] const K& key() const { return m_it->first; }
        const_iterator& operator++() {
            ++m_it;
            settle();
            return *this;
        }
        const_iterator operator++(int) {
            auto old = *this;
            ++*this;
            return old;
        }
        friend bool operator==(const const_iterator& a, const const_iterator& b) {
            return a.m_table == b.m_table && a.m_chunk == b.m_chunk &&
                   (a.m_chunk == kChunkCount || a.m_it == b.m_it);
        }

      private:
        friend class SharedMap;
        const_iterator(const Table* table, std::size_t chunk) : m_table(table), m_chunk(chunk) {
            if (m_table && m_chunk < kChunkCount) {
                enter();
            } else {
                m_chunk = kChunkCount;
            }
        }
        void enter() {
            while (m_chunk < kChunkCount &&
                   (!m_table->chunks[m_chunk] || m_table->chunks[m_chunk]->empty()))
                ++m_chunk;
            if (m_chunk < kChunkCount)
                m_it = m_table->chunks[m_chunk]->begin();
        }
        void settle() {
            if (m_it == m_table->chunks[m_chunk]->end()) {
                ++m_chunk;
                enter();
            }
        }

        const Table* m_table = nullptr;
        std::size_t m_chunk = kChunkCount;
        typename Chunk::const_iterator m_it;
    };

    [[nodiscard]] std::size_t size() const { return m_table ? m_table->size : 0; }
    [[nodiscard]] bool empty() const { return size() == 0; }

    // For caches of what is derived from a whole chunk: while a caller holds
    // a chunk, any write clones it first, so its address keeps naming the
    // same records. Null for a chunk that was never written.
    static constexpr std::size_t chunkCount() { return kChunkCount; }
    [[nodiscard]] std::shared_ptr<const Chunk> chunk(std::size_t index) const {
        return m_table ? m_table->chunks[index] : nullptr;
    }

    [[nodiscard]] const_iterator begin() const { return const_iterator(m_table.get(), 0); }
    [[nodiscard]] const_iterator end() const { return const_iterator(m_table.get(), kChunkCount); }

    // The record under `key`, or null. Valid until this map is next written.
    [[nodiscard]] const V* find(const K& key) const {
        if (!m_table)
            return nullptr;
        const auto& chunk = m_table->chunks[chunkOf(key)];
        if (!chunk)
            return nullptr;
        const auto it = position(*chunk, key);
        return it != chunk->end() && it->first == key ? it->second.get() : nullptr;
    }
    [[nodiscard]] bool contains(const K& key) const { return find(key) != nullptr; }

    // Inserts or replaces the record under `key`.
    void set(const K& key, V value) { setShared(key, std::make_shared<const V>(std::move(value))); }
    // Inserts or replaces with a record already made shared, such as one
    // decoded on another thread.
    void setShared(const K& key, std::shared_ptr<const V> value) {
        auto& chunk = writableChunk(key);
        const auto it = position(chunk, key);
        if (it != chunk.end() && it->first == key) {
            it->second = std::move(value);
        } else {
            chunk.emplace(it, key, std::move(value));
            ++m_table->size;
        }
    }
    // setShared for many records at once, as an import adds them: each chunk
    // they reach is merged once rather than shifted for every record. A later
    // record replaces an earlier one under the same key.
    void setShared(std::vector<Entry> records) {
        Builder arriving(std::move(records));
        arriving.fill(0, kChunkCount);
        for (std::size_t c = 0; c < kChunkCount; ++c) {
            auto& added = arriving.m_table.chunks[c];
            if (!added)
                continue;
            Chunk& chunk = writableChunkAt(c);
            const std::size_t before = chunk.size();
            if (before == 0) {
                chunk = std::move(*added);
                added.reset();
                m_table->size += chunk.size();
                continue;
            }
            Chunk merged;
            merged.reserve(before + added->size());
            auto old = chunk.begin();
            for (auto& entry : *added) {
                for (; old != chunk.end() && old->first < entry.first; ++old)
                    merged.push_back(std::move(*old));
                if (old != chunk.end() && old->first == entry.first)
                    ++old;
                merged.push_back(std::move(entry));
            }
            std::move(old, chunk.end(), std::back_inserter(merged));
            added.reset();
            m_table->size += merged.size() - before;
            chunk = std::move(merged);
        }
    }
    // Changes the record under `key` through `change(V&)`; false when there is none.
    template <typename F>
    bool update(const K& key, F&& change) {
        const V* current = find(key);
        if (!current)
            return false;
        V copy = *current;
        std::forward<F>(change)(copy);
        set(key, std::move(copy));
        return true;
    }
    bool erase(const K& key) {
        if (!contains(key))
            return false;
        auto& chunk = writableChunk(key);
        chunk.erase(position(chunk, key));
        --m_table->size;
        return true;
    }
    void clear() { m_table.reset(); }
    void reserve(std::size_t count) {
        for (std::size_t c = 0; c < kChunkCount; ++c)
            writableChunkAt(c).reserve(count / kChunkCount + 1);
    }

    // Makes a map of many records at once, as a load does: each chunk is sized
    // once for its share and filled in one go, which is several times quicker
    // than a setShared per record. Disjoint ranges of chunks may be filled on
    // different threads at the same time; finish() fills whatever is left.
    class Builder {
      public:
        static constexpr std::size_t kChunks = kChunkCount;

        // The records in order: a later one replaces an earlier one under the
        // same key, as setShared would.
        explicit Builder(std::vector<std::pair<K, std::shared_ptr<const V>>> records)
            : m_records(std::move(records)), m_order(m_records.size()) {
            // A stable sort by chunk, so that each chunk is filled in order.
            std::vector<std::size_t> chunks(m_records.size());
            for (std::size_t i = 0; i < m_records.size(); ++i) {
                chunks[i] = chunkOf(m_records[i].first);
                ++m_starts[chunks[i] + 1];
            }
            for (std::size_t c = 0; c < kChunkCount; ++c)
                m_starts[c + 1] += m_starts[c];
            auto next = m_starts;
            for (std::size_t i = 0; i < m_records.size(); ++i)
                m_order[next[chunks[i]]++] = i;
        }

        // Fills chunks [first, last).
        void fill(std::size_t first, std::size_t last) {
            for (std::size_t c = first; c < last; ++c) {
                m_filled[c] = true;
                if (m_starts[c] == m_starts[c + 1])
                    continue;
                auto chunk = std::make_shared<Chunk>();
                chunk->reserve(m_starts[c + 1] - m_starts[c]);
                for (std::size_t k = m_starts[c]; k < m_starts[c + 1]; ++k)
                    chunk->push_back(std::move(m_records[m_order[k]]));
                std::stable_sort(chunk->begin(), chunk->end(), byKey);
                // Of records under one key, the last stands.
                auto kept = chunk->begin();
                for (auto it = chunk->begin(); it != chunk->end(); ++it) {
                    const auto next = std::next(it);
                    if (next != chunk->end() && next->first == it->first)
                        continue;
                    if (kept != it)
                        *kept = std::move(*it);
                    ++kept;
                }
                chunk->erase(kept, chunk->end());
                m_table.chunks[c] = std::move(chunk);
            }
        }

        [[nodiscard]] SharedMap finish() && {
            SharedMap map;
            if (m_records.empty())
                return map;
            for (std::size_t c = 0; c < kChunkCount; ++c) {
                if (!m_filled[c])
                    fill(c, c + 1);
                m_table.size += m_table.chunks[c] ? m_table.chunks[c]->size() : 0;
            }
            map.m_table = std::make_shared<Table>(std::move(m_table));
            return map;
        }

      private:
        friend class SharedMap;
        std::vector<std::pair<K, std::shared_ptr<const V>>> m_records;
        std::vector<std::size_t> m_order;  // indices of m_records, chunk by chunk
        std::array<std::size_t, kChunkCount + 1> m_starts{};  // of each chunk in m_order
        std::array<bool, kChunkCount> m_filled{};
        Table m_table;
    };

    friend bool operator==(const SharedMap& a, const SharedMap& b) {
        if (a.m_table == b.m_table)
            return true;
        if (a.size() != b.size())
            return false;
        for (auto it = a.begin(); it != a.end(); ++it) {
            const V* other = b.find(it.key());
            if (!other || (other != &*it && !(*other == *it)))
                return false;
        }
        return true;
    }

  private:
    static bool byKey(const Entry& a, const Entry& b) { return a.first < b.first; }
    // Where `key` is, or would go, in a chunk.
    template <typename C>
    static auto position(C& chunk, const K& key) {
        return std::lower_bound(chunk.begin(), chunk.end(), key,
                                [](const Entry& entry, const K& k) { return entry.first < k; });
    }
    static std::size_t chunkOf(const K& key) {
        // Mix before taking the low bits: a weak hash's low bits alone could
        // crowd a few chunks and leave the rest empty.
        uint64_t h = static_cast<uint64_t>(Hash{}(key));
        h ^= h >> 33;
        h *= 0xFF51AFD7ED558CCDull;
        h ^= h >> 33;
        return static_cast<std::size_t>(h % kChunkCount);
    }
    Table& writableTable() {
        if (!m_table) {
            m_table = std::make_shared<Table>();
        } else if (m_table.use_count() > 1) {
            m_table = std::make_shared<Table>(*m_table);
        }
        return *m_table;
    }
    Chunk& writableChunkAt(std::size_t index) {
        auto& chunk = writableTable().chunks[index];
        if (!chunk) {
            chunk = std::make_shared<Chunk>();
        } else if (chunk.use_count() > 1) {
            chunk = std::make_shared<Chunk>(*chunk);
        }
        return *chunk;
    }
    Chunk& writableChunk(const K& key) { return writableChunkAt(chunkOf(key)); }

    std::shared_ptr<Table> m_table;
};

}  // namespace copperwick
