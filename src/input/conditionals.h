// Conditional sections: "#if(value)" ... "#endif".
#pragma once

#include "input/source.h"

namespace sorvel {

// Reads the condition of "#if(...)", entered on the "i". The value is stored
// as soon as it has been read. 0, 114, 115, 116, or the status of a macro or
// constant expansion inside the parentheses.
int get_if(Source& src, float& value);
// "#if": reads the condition and, when it is 0, skips the section.
int do_if(Source& src);

}  // namespace sorvel
