// Synthesising and sending a 524,288-point waveform block: the simulator must stay far below
// what the program's own benchmarks measure (target: well under 50 ms per block).
#include <benchmark/benchmark.h>

#include <memory>
#include <string>

#include "sim/model/instrument.h"
#include "sim/simulator.h"
#include "tests/sim/loopback_client.h"

namespace quarvelo::sim {
namespace {

// 104.8576 us/div on a one-channel 3000X records 1,048,576 samples at 1 GSa/s; every second
// one makes exactly 524,288 points.
constexpr const char* kSetUp =
    ":SIMulate:CHANnel1:SIGNal SIN,1kHz,1.6;:SIMulate:CHANnel1:ADD SQU,10kHz,0.4;"
    ":SIMulate:CHANnel1:NOISe 0.01;:CHANnel1:SCALe 0.2;:TIMebase:SCALe 104.8576us;"
    ":WAVeform:SOURce CHANnel1;:WAVeform:FORMat BYTE;:WAVeform:POINts:MODE RAW;"
    ":WAVeform:POINts 524288;:RUN";

void BM_SynthesiseBlock(benchmark::State& state) {
  Instrument instrument{InstrumentConfig{}};
  instrument.Execute(kSetUp);
  instrument.Execute(":STOP");
  if (instrument.Execute(":WAVeform:POINts?") != "+524288") {
    state.SkipWithError("the record is not 524288 points");
    return;
  }
  for (auto _ : state) {
    instrument.Execute(":DIGitize");  // a fresh acquisition every time, noise included
    std::string block = instrument.Execute(":WAVeform:DATA?");
    benchmark::DoNotOptimize(block.data());
  }
  state.SetItemsProcessed(state.iterations() * 524288);
}
BENCHMARK(BM_SynthesiseBlock)->Unit(benchmark::kMillisecond);

void BM_SynthesiseAndSendOverLoopback(benchmark::State& state) {
  SimulatorOptions options;
  options.vxi11_port = -1;
  options.portmapper_port = -1;
  options.hislip_port = -1;
  std::string error;
  std::unique_ptr<Simulator> simulator = Simulator::Start(options, &error);
  if (!simulator) {
    state.SkipWithError(error.c_str());
    return;
  }
  simulator->Execute(kSetUp);
  // Stopped, so that the whole record is available; every query still synthesises it anew.
  simulator->Execute(":STOP");
  LoopbackClient client(simulator->socket_port());
  for (auto _ : state) {
    client.Send(":WAVeform:DATA?\n");
    std::optional<std::string> block = client.ReadBlock(std::chrono::seconds(10));
    if (!block || block->size() != 524288) {
      state.SkipWithError("short block");
      return;
    }
    benchmark::DoNotOptimize(block->data());
  }
  state.SetBytesProcessed(state.iterations() * 524298);
}
BENCHMARK(BM_SynthesiseAndSendOverLoopback)->Unit(benchmark::kMillisecond);

// One query and its reply over loopback at the pace set with --latency (argument: ms per
// exchange): what a readback of many settings costs on an instrument rather than at once.
void BM_QueryAtLatency(benchmark::State& state) {
  SimulatorOptions options;
  options.vxi11_port = options.portmapper_port = options.hislip_port = -1;
  options.latency_ms = static_cast<double>(state.range(0));
  std::string error;
  std::unique_ptr<Simulator> simulator = Simulator::Start(options, &error);
  if (!simulator) {
    state.SkipWithError(error.c_str());
    return;
  }
  LoopbackClient client(simulator->socket_port());
  for (auto _ : state) {
    client.Send(":CHANnel1:SCALe?\n");
    if (!client.ReadLine(std::chrono::seconds(10))) {
      state.SkipWithError("no reply");
      return;
    }
  }
}
BENCHMARK(BM_QueryAtLatency)->Arg(0)->Arg(1)->Unit(benchmark::kMicrosecond)->UseRealTime();

void BM_ScreenImageBmp8(benchmark::State& state) {
  Instrument instrument{InstrumentConfig{}};
  instrument.Execute(":CHANnel2:DISPlay 1;:CHANnel3:DISPlay 1;:CHANnel4:DISPlay 1");
  for (auto _ : state) {
    std::string image = instrument.Execute(":DISPlay:DATA? BMP8bit,COLor");
    benchmark::DoNotOptimize(image.data());
  }
}
BENCHMARK(BM_ScreenImageBmp8)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace quarvelo::sim
