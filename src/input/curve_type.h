// The curve-type letter of tempo changes and moving functions.
#pragma once

#include "input/source.h"

namespace sorvel {

// Reads a curve letter (c e f l s, or v and a number) at the position into
// `code` and `value`; a "*" after it adds 100 when `allow_beats`. Returns kOk,
// kErrBadCurveType for a bad "v" value, or kErrBeatMoveNotAllowed for a "*"
// that is not allowed.
int get_curve_type(Source& src, float& code, float& value, bool allow_beats);

}  // namespace sorvel
