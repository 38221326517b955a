// The functions from values to values that every exchange goes through, and the order in which
// those grow that depend on a size. For machines with Google Benchmark.
#include <benchmark/benchmark.h>

#include <algorithm>

#include "engine/check.h"
#include "protocol/frame.h"
#include "protocol/kl_sale.h"
#include "protocol/sale_block.h"
#include "protocol/status_info.h"
#include "support/trace.h"

namespace {

sale GoodsLine() {
    sale line;
    line.title = "Moloko Otbornoe 3.2%";
    line.barcode = "1234567890123";
    line.code = 1;
    line.section = 2;
    line.price = 4990;
    line.count = 2;
    return line;
}

// The null run beside the others: so many bytes copied.
void CopyOfBytes(benchmark::State& state) {
    const Bytes from(static_cast<std::size_t>(state.range(0)), 1);
    Bytes to(from.size());
    for (auto _ : state) {
        benchmark::DoNotOptimize(to.data());
        std::copy(from.begin(), from.end(), to.begin());
        benchmark::ClobberMemory();
    }
}
BENCHMARK(CopyOfBytes)->Arg(1)->Arg(200);

// A request of so many payload bytes, made and framed.
void RequestFrame(benchmark::State& state) {
    const auto size = static_cast<std::size_t>(state.range(0));
    for (auto _ : state) {
        Bytes frame = frame::NewPayload(size);
        frame::Build(dev_salecode, 1, frame, ~0U);
        benchmark::DoNotOptimize(frame.data());
    }
}
BENCHMARK(RequestFrame)->RangeMultiplier(2)->Range(1, 128);

// The body of an answer, judged.
void AnswerBody(benchmark::State& state) {
    const auto length = static_cast<unsigned>(state.range(0));
    Bytes body(length);
    for (auto _ : state) {
        benchmark::DoNotOptimize(body.data());
        benchmark::DoNotOptimize(frame::CheckBody(body.data(), length, 0));
    }
    state.SetComplexityN(state.range(0));
}
BENCHMARK(AnswerBody)->RangeMultiplier(2)->Range(4, 128)->Arg(200)->Complexity();

void SaleBlock(benchmark::State& state) {
    const sale line = GoodsLine();
    for (auto _ : state) {
        benchmark::DoNotOptimize(MakeSaleBlock(SaleFieldsOf(line)).data());
    }
}
BENCHMARK(SaleBlock);

void Status(benchmark::State& state) {
    const packet answer{ks_saleadd, Bytes(32, 1)};
    status_info status;
    for (auto _ : state) {
        DecodeStatus(answer, status);
        benchmark::DoNotOptimize(status);
    }
}
BENCHMARK(Status);

void TapeRecord(benchmark::State& state) {
    const Bytes answer(31, 1);
    for (auto _ : state) {
        benchmark::DoNotOptimize(DecodeKLSale(answer));
    }
}
BENCHMARK(TapeRecord);

void TraceLine(benchmark::State& state) {
    const sale line = GoodsLine();
    for (auto _ : state) {
        benchmark::DoNotOptimize(trace::Line("Info: TrySendSale", " ;title = ", line.title,
                                             "; code = ", line.code, "; count = ", line.count,
                                             "; price = ", line.price));
    }
}
BENCHMARK(TraceLine);

void CheckSum(benchmark::State& state) {
    TCheck check;
    check.discount = -10;
    check.sales.assign(static_cast<std::size_t>(state.range(0)), GoodsLine());
    for (auto _ : state) {
        benchmark::DoNotOptimize(check.sum());
    }
    state.SetComplexityN(state.range(0));
}
BENCHMARK(CheckSum)->RangeMultiplier(10)->Range(10, 10000)->Complexity();

}  // namespace

BENCHMARK_MAIN();
