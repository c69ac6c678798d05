#pragma once

// Something a screen works out from the whole ledger after each save: a
// count, a list of accounts with their latest dates. On a long history that
// is a pass over a hundred thousand lines, too slow for the main thread, so
// from `inBackgroundFrom` transactions on it is read from a copy on a thread
// of its own (copies share their storage) and shown when it is back; on a
// short one it is read and shown at once. A reading overtaken by a later one
// is never shown. Main thread only, like the runtime.

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <utility>

#include "core/model/ledger.h"
#include "core/model/local_date.h"
#include "runtime/ledger_runtime.h"
#include "runtime/main_queue.h"

namespace copperwick {

template <typename T>
class LedgerReading {
  public:
    using Read = std::function<T(const Ledger&, LocalDate today)>;
    using Show = std::function<void(T)>;

    // About the point where a pass over the lines starts to cost a frame.
    static constexpr std::size_t kInBackgroundFrom = 5'000;

    LedgerReading(LedgerRuntime& runtime, Read read, Show show)
        : m_runtime(runtime), m_read(std::move(read)), m_show(std::move(show)) {}

    // Reads the live ledger as it is now.
    void start() {
        const uint64_t number = ++m_number;
        const Ledger& ledger = m_runtime.ledger();
        const LocalDate today = m_runtime.today();
        if (ledger.transactions.size() < m_inBackgroundFrom) {
            m_reading = false;
            m_show(m_read(ledger, today));
            return;
        }
        if (!m_work)
            m_work = std::make_unique<BackgroundWork>(m_runtime.mainQueue());
        m_reading = true;
        m_work->run([read = m_read, copy = ledger, today] { return read(copy, today); },
                    [this, number](WorkResult<T> result) {
                        if (number != m_number)
                            return;
                        m_reading = false;
                        // A reading that failed leaves the last one shown;
                        // the next save reads again.
                        if (result.value)
                            m_show(std::move(*result.value));
                    });
    }

    [[nodiscard]] bool isReading() const { return m_reading; }
    // Tests lower it to read a short ledger in the background.
    void setInBackgroundFrom(std::size_t transactions) { m_inBackgroundFrom = transactions; }

  private:
    LedgerRuntime& m_runtime;
    Read m_read;
    Show m_show;
    std::size_t m_inBackgroundFrom = kInBackgroundFrom;
    uint64_t m_number = 0;
    bool m_reading = false;
    // Last, so that a reading still out ends before the rest goes.
    std::unique_ptr<BackgroundWork> m_work;
};

}  // namespace copperwick
