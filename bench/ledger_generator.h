#pragma once

// A deterministic household ledger of any size, for benchmarks.
//
// The same seed and size give the same ledger, ids included, so figures from
// different runs compare. The shape is a household's: three people, six
// accounts, several years of dated lines whose bank texts are built from many
// merchant-like names with store numbers and city suffixes.

#include <cstddef>
#include <cstdint>

#include "core/model/ledger.h"

namespace copperwick::bench {

struct GeneratorOptions {
    std::size_t transactions = 10'000;
    uint64_t seed = 20261121;
    int years = 5;
};

[[nodiscard]] Ledger generateLedger(const GeneratorOptions& options);

}  // namespace copperwick::bench
