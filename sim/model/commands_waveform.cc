// Sample rate, record length and the waveform transfer (preamble and data block).
#include <cmath>
#include <string>

#include "sim/model/channel_data.h"
#include "sim/model/command_table.h"
#include "sim/model/run_control.h"
#include "sim/scpi/definite_block.h"
#include "sim/scpi/number_text.h"

namespace quarvelo::sim {
namespace {

constexpr long kMinimumRequest = 100;
constexpr long kMaximumRequest = 8000000;

int SourceChannel(const InstrumentState& state) {
  return ChannelOf(state.settings.Text(":WAVeform:SOURce"));
}

bool SourceHasData(const InstrumentState& state) {
  return ChannelHasData(state, SourceChannel(state));
}

int FormatCode(const InstrumentState& state) {
  const std::string& format = state.settings.Text(":WAVeform:FORMat");
  return format == "WORD" ? 1 : format == "ASC" ? 4 : 0;
}

int TypeCode(const InstrumentState& state) {
  const std::string& type = state.settings.Text(":ACQuire:TYPE");
  return type == "PEAK" ? 1 : type == "AVER" ? 2 : type == "HRES" ? 3 : 0;
}

// ":WAVeform:UNSigned OFF": BYTE and WORD codes as two's complement around 0, the y
// reference with them.
bool SignedCodes(const InstrumentState& state) {
  return !state.settings.Flag(":WAVeform:UNSigned") && FormatCode(state) != 4;
}

int SampleRate(InstrumentState& state, const Call&, std::string* reply) {
  *reply = FormatNr3(CurrentGeometry(state).sample_rate, 8);
  return 0;
}

int AcquirePoints(InstrumentState& state, const Call&, std::string* reply) {
  *reply = FormatNr1(CurrentGeometry(state).record_points);
  return 0;
}

int PointsSet(InstrumentState& state, const Call& call, std::string*) {
  if (call.parameters.empty()) return -109;
  if (call.parameters.size() > 1) return -108;
  NumberParse number = ParseNumber(call.parameters.front().text);
  if (number.error != 0) return number.error;
  if (number.kind == NumberParse::Kind::kMaximum) {
    // MAXimum also selects the larger record, as the instrument does.
    state.settings.SetText(":WAVeform:POINts:MODE", "MAX");
    state.requested_points = kMaximumRequest;
    return 0;
  }
  double points =
      number.kind == NumberParse::Kind::kMinimum ? kMinimumRequest : std::nearbyint(number.value);
  if (points < kMinimumRequest || points > kMaximumRequest) return -222;
  // Any count in range is taken as "at most this many"; the transfer delivers what the
  // record allows.
  state.requested_points = static_cast<long>(points);
  return 0;
}

int PointsQuery(InstrumentState& state, const Call& call, std::string* reply) {
  if (call.parameters.size() > 1) return -108;
  bool maximum = false;
  if (!call.parameters.empty()) {
    NumberParse word = ParseNumber(call.parameters.front().text);
    if (word.kind != NumberParse::Kind::kMaximum) return -224;
    maximum = true;
  }
  if (!SourceHasData(state)) {
    *reply = FormatNr1(0);
    return 0;
  }
  AcquisitionGeometry geometry = CurrentGeometry(state);
  *reply = FormatNr1(maximum ? geometry.available_points : geometry.delivered_points);
  return 0;
}

int Preamble(InstrumentState& state, const Call&, std::string* reply) {
  int channel = SourceChannel(state);
  if (channel == 0) return -222;
  AcquisitionGeometry geometry = CurrentGeometry(state);
  double scale = state.settings.Number(":CHANnel#C:SCALe", channel);
  bool word = FormatCode(state) == 1;
  bool averaging = TypeCode(state) == 2;
  long points = SourceHasData(state) ? geometry.delivered_points : 0;
  *reply = FormatNr1(FormatCode(state)) + "," + FormatNr1(TypeCode(state)) + "," +
           FormatNr1(points) + "," +
           FormatNr1(averaging ? std::llround(state.settings.Number(":ACQuire:COUNt")) : 1) + "," +
           FormatNr3(geometry.x_increment, 8) + "," + FormatNr3(geometry.x_origin, 8) + ",+0," +
           FormatNr3(YIncrement(scale) / (word ? 256.0 : 1.0), 8) + "," +
           FormatNr3(state.settings.Number(":CHANnel#C:OFFSet", channel), 8) + "," +
           FormatNr1(SignedCodes(state) ? 0
                     : word             ? 32768
                                        : 128);
  return 0;
}

int Data(InstrumentState& state, const Call&, std::string* reply) {
  int channel = SourceChannel(state);
  if (channel == 0 || !SourceHasData(state)) {
    *reply = DefiniteBlock("");
    return -222;
  }
  NextAcquisitionIfRunning(state);
  ByteRecord record = ChannelBytes(state, channel);
  if (SignedCodes(state)) {
    for (char& code : record.codes)
      code = static_cast<char>(static_cast<unsigned char>(code) ^ 0x80);
  }
  switch (FormatCode(state)) {
    case 1: {
      // Sixteen-bit codes, most significant byte first unless told otherwise.
      bool lsb_first = state.settings.Text(":WAVeform:BYTeorder") == "LSBF";
      std::string data;
      data.reserve(record.codes.size() * 2);
      for (char code : record.codes) {
        char high = code, low = 0;
        data.push_back(lsb_first ? low : high);
        data.push_back(lsb_first ? high : low);
      }
      *reply = DefiniteBlock(data);
      return 0;
    }
    case 4: {
      std::string text;
      for (size_t i = 0; i < record.codes.size(); ++i) {
        double volts = (static_cast<unsigned char>(record.codes[i]) - record.y_reference) *
                           record.y_increment +
                       record.y_origin;
        if (i > 0) text += ",";
        text += FormatNr3(volts, 6);
      }
      *reply = DefiniteBlock(text);
      return 0;
    }
    default:
      *reply = DefiniteBlock(record.codes);
      return 0;
  }
}

// The single preamble values, each as its own query.
int PreambleField(InstrumentState& state, std::string* reply, int field) {
  std::string preamble;
  int error = Preamble(state, Call{{}, {}}, &preamble);
  if (error != 0) return error;
  size_t start = 0;
  for (int i = 0; i < field; ++i) start = preamble.find(',', start) + 1;
  *reply = preamble.substr(start, preamble.find(',', start) - start);
  return 0;
}
int XIncrement(InstrumentState& s, const Call&, std::string* r) { return PreambleField(s, r, 4); }
int XOrigin(InstrumentState& s, const Call&, std::string* r) { return PreambleField(s, r, 5); }
int XReference(InstrumentState& s, const Call&, std::string* r) { return PreambleField(s, r, 6); }
int YIncrementQuery(InstrumentState& s, const Call&, std::string* r) {
  return PreambleField(s, r, 7);
}
int YOrigin(InstrumentState& s, const Call&, std::string* r) { return PreambleField(s, r, 8); }
int YReference(InstrumentState& s, const Call&, std::string* r) { return PreambleField(s, r, 9); }
int WaveformType(InstrumentState& state, const Call&, std::string* reply) {
  static constexpr const char* kTypes[] = {"NORM", "PEAK", "AVER", "HRES"};
  *reply = kTypes[TypeCode(state)];
  return 0;
}

}  // namespace

void AddWaveformCommands(std::vector<CommandEntry>& table) {
  table.push_back({HeaderPattern(":ACQuire:SRATe"), nullptr, SampleRate});
  table.push_back({HeaderPattern(":ACQuire:POINts"), nullptr, AcquirePoints});
  table.push_back({HeaderPattern(":WAVeform:POINts"), PointsSet, PointsQuery});
  table.push_back({HeaderPattern(":WAVeform:PREamble"), nullptr, Preamble});
  table.push_back({HeaderPattern(":WAVeform:DATA"), nullptr, Data});
  table.push_back({HeaderPattern(":WAVeform:XINCrement"), nullptr, XIncrement});
  table.push_back({HeaderPattern(":WAVeform:XORigin"), nullptr, XOrigin});
  table.push_back({HeaderPattern(":WAVeform:XREFerence"), nullptr, XReference});
  table.push_back({HeaderPattern(":WAVeform:YINCrement"), nullptr, YIncrementQuery});
  table.push_back({HeaderPattern(":WAVeform:YORigin"), nullptr, YOrigin});
  table.push_back({HeaderPattern(":WAVeform:YREFerence"), nullptr, YReference});
  table.push_back({HeaderPattern(":WAVeform:TYPE"), nullptr, WaveformType});
}

}  // namespace quarvelo::sim
