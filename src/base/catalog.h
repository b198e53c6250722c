// The catalogues of numbered warnings and errors.
#pragma once

namespace sorvel {

// The text of a warning; "Unspecified warning..." for a number not listed.
const char* warning_text(int number);
// The text of an error; "Unspecified error..." for a number not listed.
const char* error_text(int number);
// Whether the error catalogue lists this number.
bool is_catalogued_error(int number);

}  // namespace sorvel
