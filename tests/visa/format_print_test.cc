#include "platform/visa/format_print.h"

#include <gtest/gtest.h>

#include <cstdarg>
#include <string>
#include <vector>

#include "platform/visa/session.h"
#include "tests/visa/fake_transport.h"

namespace quarvelo::visa {
namespace {

// Records what would go on the wire, marking where END was sent.
class RecordingOutput : public FormattedOutput {
 public:
  ViStatus Append(std::string_view data) override {
    pending_ += data;
    return VI_SUCCESS;
  }
  ViStatus EndMessage() override {
    messages_.push_back(pending_);
    pending_.clear();
    return VI_SUCCESS;
  }
  std::vector<std::string> messages_;
  std::string pending_;
};

ViStatus Print(RecordingOutput* output, const char* format, ...) {
  VaArgs args;
  va_start(args.list, format);
  const ViStatus status = PrintFormatted(format, &args, output);
  va_end(args.list);
  return status;
}

TEST(FormatPrint, LineFeedInTheFormatEndsTheMessage) {
  RecordingOutput output;
  ASSERT_EQ(Print(&output, ":TIMebase:SCALe 4E-08\n"), VI_SUCCESS);
  ASSERT_EQ(Print(&output, "*IDN?\\n"), VI_SUCCESS);  // backslash-n typed as two characters
  ASSERT_EQ(Print(&output, "A;"), VI_SUCCESS);        // no LF: stays pending
  EXPECT_EQ(output.messages_, (std::vector<std::string>{":TIMebase:SCALe 4E-08\n", "*IDN?\n"}));
  EXPECT_EQ(output.pending_, "A;");
}

// What one formatted write leaves pending.
template <typename... Args>
std::string Printed(const char* format, Args... args) {
  RecordingOutput output;
  EXPECT_EQ(Print(&output, format, args...), VI_SUCCESS) << format;
  return output.pending_;
}

TEST(FormatPrint, Conversions) {
  const ViInt32 ints[3] = {1, -2, 3};
  const double reals[2] = {0.5, 2};
  const char bytes[3] = {'a', '\n', 'b'};
  EXPECT_EQ(Printed("100%%"), "100%");
  EXPECT_EQ(Printed(":CHAN%d:SCAL %g", 2, 0.05), ":CHAN2:SCAL 0.05");
  EXPECT_EQ(Printed("%5.2f|%-4d|%x|%c|%s", 3.14159, 7, 255, 'Z', "txt"), " 3.14|7   |ff|Z|txt");
  EXPECT_EQ(Printed("%*d|%.*f", 4, 12, 1, 2.25), "  12|2.2");
  EXPECT_EQ(Printed("%lld", 1234567890123LL), "1234567890123");
  EXPECT_EQ(Printed("%,3d", ints), "1,-2,3");
  EXPECT_EQ(Printed("%,#lf", 2, reals), "0.500000,2.000000");
  EXPECT_EQ(Printed("%#b", 3, bytes), std::string("#13a\nb"));
  // A line feed through an argument is data, not the end of the message.
  EXPECT_EQ(Printed(":DISP:ANN:TEXT \"%s\"", "two\nlines"), ":DISP:ANN:TEXT \"two\nlines\"");
}

TEST(FormatPrint, BadConversionsAreRejected) {
  RecordingOutput output;
  EXPECT_EQ(Print(&output, "abc %"), VI_ERROR_INV_FMT);
  EXPECT_EQ(Print(&output, "%y", 1), VI_ERROR_NSUP_FMT);
  EXPECT_EQ(Print(&output, "%s", static_cast<const char*>(nullptr)), VI_ERROR_USER_BUF);
}

ViStatus SessionPrint(Session* session, const char* format, ...) {
  VaArgs args;
  va_start(args.list, format);
  const ViStatus status = session->Printf(format, &args);
  va_end(args.list);
  return status;
}

// A message longer than the write buffer goes out in parts with END only on the last; output
// without a line feed waits for a flush, which sends it with END, or a discard.
TEST(FormatPrint, SessionSendsEndOnlyWithTheMessagesEnd) {
  auto transport = std::make_unique<testing::FakeTransport>(false);
  testing::FakeTransport* wire = transport.get();
  Session session(std::move(transport));
  const std::string payload(3 * Session::kWriteBufferSize, 'x');
  ASSERT_EQ(SessionPrint(&session, "%s\n", payload.c_str()), VI_SUCCESS);
  EXPECT_EQ(wire->written(), payload + "\n");
  EXPECT_EQ(wire->messages_ended(), 1);
  ASSERT_EQ(SessionPrint(&session, ":RUN"), VI_SUCCESS);
  EXPECT_EQ(wire->written().size(), payload.size() + 1);
  ASSERT_EQ(session.Flush(VI_WRITE_BUF), VI_SUCCESS);
  EXPECT_EQ(wire->written(), payload + "\n:RUN");
  EXPECT_EQ(wire->messages_ended(), 2);
  ASSERT_EQ(SessionPrint(&session, ":STOP"), VI_SUCCESS);
  ASSERT_EQ(session.Flush(VI_WRITE_BUF_DISCARD), VI_SUCCESS);
  ASSERT_EQ(session.Flush(VI_WRITE_BUF), VI_SUCCESS);
  EXPECT_EQ(wire->written(), payload + "\n:RUN");
}

}  // namespace
}  // namespace quarvelo::visa
