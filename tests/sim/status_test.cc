// The error queue, the status registers and Run/Stop/Single.
#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <thread>

#include "sim/model/instrument.h"
#include "sim/status/error_queue.h"

namespace quarvelo::sim {
namespace {

TEST(ErrorQueueTest, FirstInFirstOutThenNoError) {
  ErrorQueue queue;
  queue.Push(-113);
  queue.Push(-222);
  EXPECT_EQ(queue.Pop(), "-113,\"Undefined header\"");
  EXPECT_EQ(queue.Pop(), "-222,\"Data out of range\"");
  EXPECT_EQ(queue.Pop(), "+0,\"No error\"");
}

TEST(ErrorQueueTest, OverflowReplacesTheNewestEntry) {
  ErrorQueue queue;
  for (int i = 0; i < 100; ++i) queue.Push(-113);
  EXPECT_EQ(queue.size(), ErrorQueue::kCapacity);
  for (size_t i = 0; i + 1 < ErrorQueue::kCapacity; ++i) {
    EXPECT_EQ(queue.Pop(), "-113,\"Undefined header\"");
  }
  EXPECT_EQ(queue.Pop(), "-350,\"Queue overflow\"");
  EXPECT_EQ(queue.Pop(), "+0,\"No error\"");
}

TEST(StatusTest, ClearStatusEmptiesTheQueueAndEventRegister) {
  Instrument instrument(InstrumentConfig{});
  instrument.Execute(":NOPE");
  EXPECT_EQ(instrument.Execute("*ESR?"), "+160");  // power on + command error
  EXPECT_EQ(instrument.Execute("*ESR?"), "+0");    // reading clears it
  instrument.Execute(":NOPE;*CLS");
  EXPECT_EQ(instrument.Execute(":SYSTem:ERRor?;*ESR?"), "+0,\"No error\";+0");
}

TEST(StatusTest, ErrorClassesSetTheirEventBits) {
  Instrument instrument(InstrumentConfig{});
  instrument.Execute("*CLS");
  instrument.Execute(":WAVeform:POINts 50");  // below what the instrument accepts: -222
  EXPECT_EQ(instrument.Execute("*ESR?"), "+16");
  instrument.ReplyInterrupted();
  EXPECT_EQ(instrument.Execute("*ESR?"), "+4");
  EXPECT_EQ(instrument.Execute(":SYSTem:ERRor?;:SYSTem:ERRor?"),
            "-222,\"Data out of range\";-410,\"Query INTERRUPTED\"");
}

TEST(StatusTest, KeyPressSetsUserRequestUntilRead) {
  Instrument instrument(InstrumentConfig{});
  instrument.Execute("*CLS;:SIMulate:KEY");
  EXPECT_EQ(instrument.Execute("*ESR?"), "+64");
  EXPECT_EQ(instrument.Execute("*ESR?"), "+0");
}

TEST(StatusTest, StatusByteShowsErrorsAndEnabledEvents) {
  Instrument instrument(InstrumentConfig{});
  instrument.Execute("*CLS;*ESE 32;:NOPE");
  EXPECT_EQ(instrument.Execute("*ESE?;*STB?"), "+32;+36");
}

TEST(RunControlTest, RunAndStopDriveTheRunBit) {
  Instrument instrument(InstrumentConfig{});
  EXPECT_EQ(instrument.Execute(":OPERegister:CONDition?"), "+8");
  instrument.Execute(":STOP");
  EXPECT_EQ(instrument.Execute(":OPERegister:CONDition?"), "+0");
  instrument.Execute(":RUN");
  EXPECT_EQ(instrument.Execute(":OPERegister:CONDition?"), "+8");
  instrument.Execute(":DIGitize CHANnel1");
  EXPECT_EQ(instrument.Execute(":OPERegister:CONDition?"), "+0");
}

TEST(RunControlTest, SingleCompletesAfterOneTriggerAndClearsTheRunBit) {
  Instrument instrument(InstrumentConfig{});
  // A 1 kHz sine on channel 2 crossing the 0 V level; 10 us/div makes a 0.1 ms record.
  instrument.Execute(":SIMulate:CHANnel2:SIGNal SIN,1000,1;:CHANnel2:DISPlay 1");
  instrument.Execute(":TRIGger:EDGE:SOURce CHAN2;:TRIGger:SWEep NORMal;:TIMebase:SCALe 10us");
  instrument.Execute(":SINGle");
  EXPECT_EQ(instrument.Execute(":OPERegister:CONDition?"), "+40");  // Run + Wait Trig
  EXPECT_EQ(instrument.Execute(":AER?"), "+1");
  std::string condition;
  for (int i = 0; i < 200 && condition != "+0"; ++i) {
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
    condition = instrument.Execute(":OPERegister:CONDition?");
  }
  EXPECT_EQ(condition, "+0");
  EXPECT_EQ(instrument.Execute(":TER?;:TER?"), "+1;+0");
}

TEST(RunControlTest, SingleWithoutTriggerWaitsUntilForced) {
  Instrument instrument(InstrumentConfig{});
  instrument.Execute(":SIMulate:CHANnel1:SIGNal SIN,1000,1;:TIMebase:SCALe 10us");
  // The level lies above the signal, the sweep waits for a trigger.
  instrument.Execute(":TRIGger:SWEep NORMal;:TRIGger:EDGE:LEVel 0.9;:SINGle");
  std::this_thread::sleep_for(std::chrono::milliseconds(20));
  EXPECT_EQ(instrument.Execute(":OPERegister:CONDition?"), "+40");
  instrument.Execute(":TRIGger:FORCe");
  EXPECT_EQ(instrument.Execute(":OPERegister:CONDition?"), "+0");
}

TEST(RunControlTest, ArmEventIsClearedByReadingWhileStopped) {
  Instrument instrument(InstrumentConfig{});
  instrument.Execute(":STOP");
  EXPECT_EQ(instrument.Execute(":AER?"), "+1");
  EXPECT_EQ(instrument.Execute(":AER?"), "+0");
}

}  // namespace
}  // namespace quarvelo::sim
