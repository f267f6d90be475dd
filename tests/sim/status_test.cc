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

// A 1 kHz sine crossing 0 V, 10 us/div: a 0.1 ms record. A level of 0.9 V never triggers.
TEST(RunControlTest, SingleEndsAfterOneTriggerOrAForceAndClearsTheRunBit) {
  for (const bool triggered : {true, false}) {
    Instrument instrument(InstrumentConfig{});
    instrument.Execute(":SIMulate:CHANnel1:SIGNal SIN,1000,1;:TIMebase:SCALe 10us");
    instrument.Execute(triggered ? ":TRIGger:SWEep NORMal;:TRIGger:EDGE:LEVel 0;:SINGle"
                                 : ":TRIGger:SWEep NORMal;:TRIGger:EDGE:LEVel 0.9;:SINGle");
    EXPECT_EQ(instrument.Execute(":OPERegister:CONDition?;:AER?"), "+40;+1");  // Run + Wait Trig
    std::string condition;
    for (int i = 0; i < 200 && condition != "+0"; ++i) {
      std::this_thread::sleep_for(std::chrono::milliseconds(5));
      condition = instrument.Execute(":OPERegister:CONDition?");
      if (!triggered && i == 4) {
        EXPECT_EQ(condition, "+40") << "no trigger yet";
        instrument.Execute(":TRIGger:FORCe");
      }
    }
    EXPECT_EQ(condition, "+0") << triggered;
    EXPECT_EQ(instrument.Execute(":TER?;:TER?"), "+1;+0") << triggered;
  }
}

}  // namespace
}  // namespace quarvelo::sim
