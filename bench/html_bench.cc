// HTML to text on a newsletter-like page of 1 MB, next to a plain memcpy of the same page, so
// the figure can be read against the machine's memory speed.
#include <benchmark/benchmark.h>

#include <cstring>
#include <string>

#include "html/html_to_text.h"

namespace {

constexpr size_t kPageBytes = 1 << 20;

std::string NewsletterStory(int number) {
  std::string n = std::to_string(number);
  return "<tr><td class=\"story\" style=\"padding:12px 24px;font-family:Arial,sans-serif\">\r\n"
         "<h2><a href=\"https://news.example.com/story/" +
         n + "?utm_source=newsletter&amp;utm_medium=email\" target=\"_blank\">Headline " + n +
         ": caf&eacute; prices &amp; the &#8220;new normal&#8221;</a></h2>\r\n"
         "<p style=\"font-size:14px;line-height:20px;color:#333333\">Readers wrote in about "
         "last week&#8217;s piece&nbsp;&mdash; thank you. Prices rose 3&nbsp;% &lt;again&gt;, "
         "and a &lt; b still holds for most of us.<br />Read the whole story on the site.</p>\r\n"
         "<img src=\"https://news.example.com/img/" +
         n +
         ".jpg\" width=\"552\" height=\"200\" alt=\"Story picture\" border=\"0\">\r\n"
         "<!-- story " +
         n + " end --></td></tr>\r\n";
}

std::string NewsletterPage() {
  std::string page =
      "<!DOCTYPE html PUBLIC \"-//W3C//DTD XHTML 1.0 Transitional//EN\">\r\n<html><head>"
      "<meta http-equiv=\"Content-Type\" content=\"text/html; charset=windows-1252\">"
      "<title>The Weekly Letter</title><style type=\"text/css\">body{margin:0} "
      ".story h2{font-size:18px}</style></head>\r\n<body bgcolor=\"#ffffff\">"
      "<table width=\"600\" cellpadding=\"0\" cellspacing=\"0\" border=\"0\" align=\"center\">\r\n";
  for (int story = 1; page.size() < kPageBytes; ++story) page += NewsletterStory(story);
  return page +
         "</table><p>You receive this letter because you subscribed. "
         "<a href=\"https://news.example.com/unsubscribe\">Unsubscribe</a></p>"
         "</body></html>\r\n";
}

const std::string& Page() {
  static const std::string page = NewsletterPage();
  return page;
}

void BM_ConvertHtmlToText(benchmark::State& state) {
  const CString html(Page().c_str());
  for (auto _ : state) {
    CString text = mailslice::html::ConvertHtmlToText(html);
    benchmark::DoNotOptimize(text);
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) *
                          static_cast<int64_t>(Page().size()));
}
BENCHMARK(BM_ConvertHtmlToText);

void BM_MemcpyHtmlPage(benchmark::State& state) {
  const std::string& page = Page();
  std::string copy(page.size(), '\0');
  for (auto _ : state) {
    std::memcpy(copy.data(), page.data(), page.size());
    benchmark::DoNotOptimize(copy.data());
    benchmark::ClobberMemory();
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) *
                          static_cast<int64_t>(page.size()));
}
BENCHMARK(BM_MemcpyHtmlPage);

}  // namespace
