// What `quarvelo` does with its own command-line options: --help and --version print and exit
// before any window exists (so they work without a display); everything else is left to Qt.
#ifndef QUARVELO_APP_PROGRAM_COMMAND_LINE_H_
#define QUARVELO_APP_PROGRAM_COMMAND_LINE_H_

#include <string>
#include <vector>

namespace quarvelo::app {

enum class ProgramAction { kRun, kHelp, kVersion };

// The first of --help/-h/--version/-v decides; "--" ends the options.
ProgramAction ProgramActionFor(const std::vector<std::string>& arguments);

std::string ProgramUsage();
std::string ProgramVersionText();

}  // namespace quarvelo::app

#endif  // QUARVELO_APP_PROGRAM_COMMAND_LINE_H_
