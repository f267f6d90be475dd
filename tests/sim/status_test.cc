// The error queue, the status registers and Run/Stop/Single.
#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <thread>

#include "sim/model/instrument.h"
#include "sim/status/error_queue.h"

namespace quarvelo::sim {
namespace {

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

TEST(StatusTest, RegistersFollowEventsAndReadingClearsThem) {
  struct Case {
    const char* setup;
    const char* query;
    const char* reply;
  };
  for (const Case& c : std::initializer_list<Case>{
           {":NOPE", "*ESR?;*ESR?", "+160;+0"},  // power on + command error, then cleared
           {":NOPE;*CLS", ":SYSTem:ERRor?;*ESR?", "+0,\"No error\";+0"},
           {"*CLS;:WAVeform:POINts 50", "*ESR?", "+16"},  // below the accepted range: -222
           {"*CLS;:SIMulate:KEY", "*ESR?;*ESR?", "+64;+0"},
           {"*CLS;*ESE 32;:NOPE", "*ESE?;*STB?", "+32;+36"},
           {"", ":OPERegister:CONDition?", "+8"},
           {":STOP", ":OPERegister:CONDition?", "+0"},
           {":STOP;:RUN", ":OPERegister:CONDition?", "+8"},
           {":DIGitize CHANnel1", ":OPERegister:CONDition?", "+0"},
           {":STOP", ":AER?;:AER?", "+1;+0"},
       }) {
    Instrument instrument(InstrumentConfig{});
    instrument.Execute(c.setup);
    EXPECT_EQ(instrument.Execute(c.query), c.reply) << c.setup << " " << c.query;
  }
}

TEST(StatusTest, InterruptedReplyIsAQueryErrorQueuedAfterEarlierOnes) {
  Instrument instrument(InstrumentConfig{});
  instrument.Execute("*CLS;:WAVeform:POINts 50");
  instrument.Execute("*ESR?");
  instrument.ReplyInterrupted();
  EXPECT_EQ(instrument.Execute("*ESR?"), "+4");
  EXPECT_EQ(instrument.Execute(":SYSTem:ERRor?;:SYSTem:ERRor?;:SYSTem:ERRor?"),
            "-222,\"Data out of range\";-410,\"Query INTERRUPTED\";+0,\"No error\"");
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

}  // namespace
}  // namespace quarvelo::sim
