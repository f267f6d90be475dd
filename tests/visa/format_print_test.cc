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

TEST(FormatPrint, LineFeedThroughAnArgumentIsData) {
  RecordingOutput output;
  ASSERT_EQ(Print(&output, ":DISP:ANN:TEXT \"%s\"", "two\nlines"), VI_SUCCESS);
  EXPECT_TRUE(output.messages_.empty());
  EXPECT_EQ(output.pending_, ":DISP:ANN:TEXT \"two\nlines\"");
}

TEST(FormatPrint, Conversions) {
  struct Case {
    std::string expected;
    std::string actual;
  };
  RecordingOutput o;
  const auto take = [&o] {
    std::string text = o.pending_;
    o.pending_.clear();
    return text;
  };
  std::vector<Case> cases;
  Print(&o, "100%%");
  cases.push_back({"100%", take()});
  Print(&o, ":CHAN%d:SCAL %g", 2, 0.05);
  cases.push_back({":CHAN2:SCAL 0.05", take()});
  Print(&o, "%5.2f|%-4d|%x|%c|%s", 3.14159, 7, 255, 'Z', "txt");
  cases.push_back({" 3.14|7   |ff|Z|txt", take()});
  Print(&o, "%*d|%.*f", 4, 12, 1, 2.25);
  cases.push_back({"  12|2.2", take()});
  Print(&o, "%lld", 1234567890123LL);
  cases.push_back({"1234567890123", take()});
  const ViInt32 ints[3] = {1, -2, 3};
  Print(&o, "%,3d", ints);
  cases.push_back({"1,-2,3", take()});
  const double reals[2] = {0.5, 2};
  Print(&o, "%,#lf", 2, reals);
  cases.push_back({"0.500000,2.000000", take()});
  const char bytes[3] = {'a', '\n', 'b'};
  Print(&o, "%#b", 3, bytes);
  cases.push_back({std::string("#13a\nb"), take()});
  for (const Case& c : cases) EXPECT_EQ(c.actual, c.expected);
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

TEST(FormatPrint, LongMessageGoesOutInPartsWithEndOnlyOnTheLast) {
  auto transport = std::make_unique<testing::FakeTransport>(false);
  testing::FakeTransport* wire = transport.get();
  Session session(std::move(transport));
  const std::string payload(3 * Session::kWriteBufferSize, 'x');
  ASSERT_EQ(SessionPrint(&session, "%s\n", payload.c_str()), VI_SUCCESS);
  EXPECT_EQ(wire->written(), payload + "\n");
  EXPECT_EQ(wire->messages_ended(), 1);
}

TEST(FormatPrint, WriteBufferFlushSendsPendingOutputWithEnd) {
  auto transport = std::make_unique<testing::FakeTransport>(false);
  testing::FakeTransport* wire = transport.get();
  Session session(std::move(transport));
  ASSERT_EQ(SessionPrint(&session, ":RUN"), VI_SUCCESS);
  EXPECT_EQ(wire->written(), "");
  ASSERT_EQ(session.Flush(VI_WRITE_BUF), VI_SUCCESS);
  EXPECT_EQ(wire->written(), ":RUN");
  EXPECT_EQ(wire->messages_ended(), 1);
  ASSERT_EQ(SessionPrint(&session, ":STOP"), VI_SUCCESS);
  ASSERT_EQ(session.Flush(VI_WRITE_BUF_DISCARD), VI_SUCCESS);
  ASSERT_EQ(session.Flush(VI_WRITE_BUF), VI_SUCCESS);
  EXPECT_EQ(wire->written(), ":RUN");
}

}  // namespace
}  // namespace quarvelo::visa
