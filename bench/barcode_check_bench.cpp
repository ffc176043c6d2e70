// How many checks a second each row of the barcode rules takes, with the longest data it accepts, made of the
// byte that its list of allowed bytes finds last. Code128 with and without digit pairs to pack.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

#include "printer/barcode_check.h"

namespace {

struct Row {
    const char* name;
    std::uint32_t code;
    std::string data;
};

std::string Repeated(const std::string& front, char byte, std::size_t length) {
    return front + std::string(length - front.size(), byte);
}

const std::vector<Row> kRows = {
    {"UPC-A", kUpcA, Repeated("", '9', 12)},
    {"UPC-E", kUpcE, Repeated("0", '9', 12)},
    {"EAN13", kEan13, Repeated("", '9', 13)},
    {"EAN8", kEan8, Repeated("", '9', 8)},
    {"Code39", kCode39, Repeated("", 'Z', 255)},
    {"ITF", kItf, Repeated("", '9', 255)},
    {"Codabar", kCodabar, Repeated("A", 'T', 255)},
    {"Code93", kCode93, Repeated("", '\x7F', 255)},
    {"Code128", kCode128, Repeated("{B", '\x7F', 255)},
    {"Code128, digit pairs", kCode128, Repeated("{C", '9', 254)},
    {"GS1 DataBar Omnidirectional", 9, Repeated("", '|', 40)},
    {"GS1 DataBar Truncated", 10, Repeated("", '|', 40)},
    {"GS1 DataBar Limited", 11, Repeated("", '|', 40)},
    {"GS1 DataBar Expanded", 12, Repeated("", '|', 40)},
    {"PDF417", kFirstCheck2D, Repeated("", 'x', 255)},
    {"GS1 DataBar Stacked", kFirstCheck2D + 1, Repeated("", '|', 40)},
    {"GS1 DataBar Stacked Omnidirectional", kFirstCheck2D + 2, Repeated("", '|', 40)},
    {"GS1 DataBar Expanded Stacked", kFirstCheck2D + 3, Repeated("", '|', 40)},
    {"QR Code", kFirstCheck2D + 4, Repeated("", 'x', 255)},
    {"Maxi Code", kFirstCheck2D + 5, Repeated("", 'Z', 84)},
};

void Check(benchmark::State& state, const Row& row) {
    std::vector<std::uint8_t> data(row.data.begin(), row.data.end());
    for (auto _ : state) {
        // Packing rewrites the data.
        std::copy(row.data.begin(), row.data.end(), data.begin());
        auto length = static_cast<std::uint32_t>(data.size());
        const bool accepts = CheckBarcodeData(row.code, data.data(), &length);
        if (!accepts) {
            state.SkipWithError("refused");
            break;
        }
        benchmark::DoNotOptimize(length);
    }
    state.SetItemsProcessed(state.iterations());
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(row.data.size()));
}

const bool kRegistered = [] {
    for (const Row& row : kRows) {
        benchmark::RegisterBenchmark(row.name, Check, row);
    }
    return true;
}();

}  // namespace
