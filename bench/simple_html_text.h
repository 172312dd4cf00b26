// The small HTML reduction the GMime side of reader_flow uses, GMime having none of its own:
// drops tags, comments, and style and script content, turns line and block ends into line
// breaks, and decodes the common named entities and numeric references.
#ifndef MAILSLICE_BENCH_SIMPLE_HTML_TEXT_H
#define MAILSLICE_BENCH_SIMPLE_HTML_TEXT_H

#include <string>
#include <string_view>

namespace mailslice::bench {

std::string TextOfHtml(std::string_view html);

}  // namespace mailslice::bench

#endif  // MAILSLICE_BENCH_SIMPLE_HTML_TEXT_H
