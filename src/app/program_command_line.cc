#include "app/program_command_line.h"

namespace quarvelo::app {

ProgramAction ProgramActionFor(const std::vector<std::string>& arguments) {
  for (const std::string& argument : arguments) {
    if (argument == "--") break;
    if (argument == "--help" || argument == "-h") return ProgramAction::kHelp;
    if (argument == "--version" || argument == "-v") return ProgramAction::kVersion;
  }
  return ProgramAction::kRun;
}

std::string ProgramUsage() {
  return "usage: quarvelo [--help] [--version] [Qt options such as -platform NAME]\n"
         "Remote control and spectrum analysis for Keysight X-series oscilloscopes.\n"
         "The instrument's VISA resource string is set in Settings (Find lists the\n"
         "instruments on USB and on the local networks).\n"
         "  -h, --help     print this help and exit\n"
         "  -v, --version  print the version and exit\n"
         "See quarvelo(1) and the program's Help menu.\n";
}

std::string ProgramVersionText() { return "quarvelo " QUARVELO_VERSION_TEXT "\n"; }

}  // namespace quarvelo::app
