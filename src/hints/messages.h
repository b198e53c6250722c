// The texts of the run's messages as a finding says them: on one line, without
// the frame ("ERROR: Line 12: ") the run prints around them.
#pragma once

#include <string>

namespace sorvel {

// A message text on one line: each line break, with the blanks around it,
// becomes one blank; blanks at either end go.
std::string one_line(const std::string& text);

// The last message in what the run printed on its screen: the lines after the
// last empty line, or after the last progress line (one that begins with a
// tab, as "\tOpening include file"), without the "ERROR: ", "Error: " and
// "Line N: " that frame it. Empty when the screen holds none.
std::string last_message(const std::string& screen);

}  // namespace sorvel
