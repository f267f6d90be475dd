// The simulator's own :SIMulate commands the link and acquisition tests steer it with.
#ifndef QUARVELO_TESTS_LINK_SIM_FAULTS_H_
#define QUARVELO_TESTS_LINK_SIM_FAULTS_H_

namespace quarvelo::testing_support {

inline constexpr const char* kPressFrontPanelKey = ":SIMulate:KEY";
inline constexpr const char* kNeverAnswerNextQuery = ":SIMulate:SILent";
// The next block stops half-way, with the connection left open.
inline constexpr const char* kCutNextBlock = ":SIMulate:CUT";

}  // namespace quarvelo::testing_support

#endif  // QUARVELO_TESTS_LINK_SIM_FAULTS_H_
