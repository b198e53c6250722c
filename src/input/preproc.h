// The per-line preprocessing that get_buff runs on every line it reads:
// conditional sections, macro calls and constant references.
#pragma once

namespace sorvel {

class Source;
struct Run;

// Non-zero while a false conditional section is being skipped.
int in_if0(const Run& run);
// 1 when the text at `pos` is "if(" / "endif".
int is_if(const char* buffer, int pos);
int is_endif(const char* buffer, int pos);
// Handle an "#if" / "#endif" line; the position is on the letter after "#".
int do_if_interface(Source& src);
int do_endif(Source& src);

// The macro pass over the line: records definitions (marking their
// characters) and expands calls. The constant pass expands references at
// unmarked positions. Both return 0 or a positive error number and leave the
// position at 0.
int parse_macros(Source& src, unsigned char* marks);
int parse_variables(Source& src, const unsigned char* marks);

// 1 when every "#if" has been closed by its "#endif".
int ifdef_match(const Run& run);

// G-block statements after "#": a macro statement (#define, #undef, #if,
// #endif) or a constant (#const). Entered just after the "#".
int parse_macro(Source& src);
int parse_var(Source& src);

}  // namespace sorvel
