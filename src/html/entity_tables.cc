// The rows of the character reference tables, in the order they are applied.
#include "html/entity_tables.h"

namespace mailslice::html {
namespace {

// CJK brackets and a small kana, as Japanese newsletters write them.
constexpr std::array<EntityRow, 5> kAmpHash12 = {{
    {u"#12298", u"\u300A"},
    {u"#12299", u"\u300B"},
    {u"#12304", u"\u3010"},
    {u"#12305", u"\u3011"},
    {u"#12423", u"\u3087"},
}};

// Windows-1252 punctuation written by its byte number; "&#151;" (an em dash there) reads as a
// plain hyphen. The Latin-1 numbers stand for themselves.
constexpr std::array<EntityRow, 43> kAmpHash1 = {{
    {u"#149", u"\u0095"}, {u"#151", u"\u002D"}, {u"#155", u"\u009B"}, {u"#160", u"\u00A0"},
    {u"#161", u"\u00A1"}, {u"#162", u"\u00A2"}, {u"#163", u"\u00A3"}, {u"#164", u"\u00A4"},
    {u"#165", u"\u00A5"}, {u"#166", u"\u00A6"}, {u"#167", u"\u00A7"}, {u"#168", u"\u00A8"},
    {u"#169", u"\u00A9"}, {u"#170", u"\u00AA"}, {u"#171", u"\u00AB"}, {u"#172", u"\u00AC"},
    {u"#173", u"\u00AD"}, {u"#174", u"\u00AE"}, {u"#175", u"\u00AF"}, {u"#176", u"\u00B0"},
    {u"#177", u"\u00B1"}, {u"#178", u"\u00B2"}, {u"#179", u"\u00B3"}, {u"#180", u"\u00B4"},
    {u"#181", u"\u00B5"}, {u"#182", u"\u00B6"}, {u"#183", u"\u00B7"}, {u"#184", u"\u00B8"},
    {u"#185", u"\u00B9"}, {u"#186", u"\u00BA"}, {u"#187", u"\u00BB"}, {u"#188", u"\u00BC"},
    {u"#189", u"\u00BD"}, {u"#190", u"\u00BE"}, {u"#191", u"\u00BF"}, {u"#192", u"\u00C0"},
    {u"#193", u"\u00C1"}, {u"#194", u"\u00C2"}, {u"#195", u"\u00C3"}, {u"#196", u"\u00C4"},
    {u"#197", u"\u00C5"}, {u"#198", u"\u00C6"}, {u"#199", u"\u00C7"},
}};

// Latin-1 numbers stand for themselves; the Polish letters written by their Unicode number come
// out as their Windows-1250 bytes.
constexpr std::array<EntityRow, 62> kAmpHash2 = {{
    {u"#215", u"\u00D7"}, {u"#247", u"\u00F7"}, {u"#200", u"\u00C8"}, {u"#201", u"\u00C9"},
    {u"#202", u"\u00CA"}, {u"#203", u"\u00CB"}, {u"#204", u"\u00CC"}, {u"#205", u"\u00CD"},
    {u"#206", u"\u00CE"}, {u"#207", u"\u00CF"}, {u"#208", u"\u00D0"}, {u"#209", u"\u00D1"},
    {u"#210", u"\u00D2"}, {u"#211", u"\u00D3"}, {u"#212", u"\u00D4"}, {u"#213", u"\u00D5"},
    {u"#214", u"\u00D6"}, {u"#216", u"\u00D8"}, {u"#217", u"\u00D9"}, {u"#218", u"\u00DA"},
    {u"#219", u"\u00DB"}, {u"#220", u"\u00DC"}, {u"#221", u"\u00DD"}, {u"#222", u"\u00DE"},
    {u"#223", u"\u00DF"}, {u"#224", u"\u00E0"}, {u"#225", u"\u00E1"}, {u"#226", u"\u00E2"},
    {u"#227", u"\u00E3"}, {u"#228", u"\u00E4"}, {u"#229", u"\u00E5"}, {u"#230", u"\u00E6"},
    {u"#231", u"\u00E7"}, {u"#232", u"\u00E8"}, {u"#233", u"\u00E9"}, {u"#234", u"\u00EA"},
    {u"#235", u"\u00EB"}, {u"#236", u"\u00EC"}, {u"#237", u"\u00ED"}, {u"#238", u"\u00EE"},
    {u"#239", u"\u00EF"}, {u"#240", u"\u00F0"}, {u"#241", u"\u00F1"}, {u"#242", u"\u00F2"},
    {u"#243", u"\u00F3"}, {u"#244", u"\u00F4"}, {u"#245", u"\u00F5"}, {u"#246", u"\u00F6"},
    {u"#248", u"\u00F8"}, {u"#249", u"\u00F9"}, {u"#250", u"\u00FA"}, {u"#251", u"\u00FB"},
    {u"#252", u"\u00FC"}, {u"#253", u"\u00FD"}, {u"#254", u"\u00FE"}, {u"#255", u"\u00FF"},
    {u"#260", u"\u00A5"}, {u"#261", u"\u00B9"}, {u"#262", u"\u00C6"}, {u"#263", u"\u00E6"},
    {u"#280", u"\u00CA"}, {u"#281", u"\u00EA"},
}};

// Quotes, the ampersand, and more Polish letters as Windows-1250 bytes ("&#376;" as the
// Windows-1252 byte of Y diaeresis).
constexpr std::array<EntityRow, 14> kAmpHash3 = {{
    {u"#34", u"\u0022"},
    {u"#39", u"\u0027"},
    {u"#38", u"\u0026"},
    {u"#376", u"\u009F"},
    {u"#321", u"\u00A3"},
    {u"#322", u"\u00B3"},
    {u"#323", u"\u00D1"},
    {u"#324", u"\u00F1"},
    {u"#346", u"\u008C"},
    {u"#347", u"\u009C"},
    {u"#377", u"\u008F"},
    {u"#378", u"\u009F"},
    {u"#379", u"\u00AF"},
    {u"#380", u"\u00BF"},
}};

constexpr std::array<EntityRow, 2> kAmpHash6 = {{
    {u"#60", u"\u003C"},
    {u"#62", u"\u003E"},
}};

// Typographic quotes, bullets and dashes become plain ASCII; U+2217 is shown as the full-width
// not sign.
constexpr std::array<EntityRow, 10> kAmpHash8 = {{
    {u"#8470", u"\u2116"},
    {u"#8727", u"\uFFE2"},
    {u"#8839", u"\u2287"},
    {u"#8226", u"\u0020"},
    {u"#8211", u"\u0020"},
    {u"#8217", u"\u0027"},
    {u"#8249", u"\u003C"},
    {u"#8250", u"\u003E"},
    {u"#8220", u"\u0022"},
    {u"#8221", u"\u0022"},
}};

}  // namespace

const std::array<EntityGroup, kNumericEntityGroupCount> kNumericEntityGroups = {{
    {u"&#12", kAmpHash12},
    {u"&#1", kAmpHash1},
    {u"&#2", kAmpHash2},
    {u"&#3", kAmpHash3},
    {u"&#6", kAmpHash6},
    {u"&#8", kAmpHash8},
}};

// Latin-1 names map to their code points; the euro, dagger, oe ligatures and curly quotes to
// their Windows-1252 bytes, "&notin;" to U+A1FE. The four repeats at the end never find anything
// left to replace.
const std::array<EntityRow, kNamedEntityCount> kNamedEntities = {{
    {u"lt", u"\u003C"},     {u"gt", u"\u003E"},     {u"amp", u"\u0026"},    {u"apos", u"\u0027"},
    {u"quot", u"\u0022"},   {u"nbsp", u"\u00A0"},   {u"iexcl", u"\u00A1"},  {u"cent", u"\u00A2"},
    {u"pound", u"\u00A3"},  {u"curren", u"\u00A4"}, {u"yen", u"\u00A5"},    {u"brvbar", u"\u00A6"},
    {u"sect", u"\u00A7"},   {u"uml", u"\u00A8"},    {u"copy", u"\u00A9"},   {u"ordf", u"\u00AA"},
    {u"laquo", u"\u00AB"},  {u"not", u"\u00AC"},    {u"shy", u"\u00AD"},    {u"reg", u"\u00AE"},
    {u"macr", u"\u00AF"},   {u"deg", u"\u00B0"},    {u"plusmn", u"\u00B1"}, {u"sup2", u"\u00B2"},
    {u"sup3", u"\u00B3"},   {u"acute", u"\u00B4"},  {u"micro", u"\u00B5"},  {u"para", u"\u00B6"},
    {u"middot", u"\u00B7"}, {u"cedil", u"\u00B8"},  {u"sup1", u"\u00B9"},   {u"ordm", u"\u00BA"},
    {u"raquo", u"\u00BB"},  {u"frac14", u"\u00BC"}, {u"frac12", u"\u00BD"}, {u"frac34", u"\u00BE"},
    {u"iquest", u"\u00BF"}, {u"times", u"\u00D7"},  {u"divide", u"\u00F7"}, {u"euro", u"\u0080"},
    {u"dagger", u"\u0086"}, {u"Agrave", u"\u00C0"}, {u"Aacute", u"\u00C1"}, {u"Acirc", u"\u00C2"},
    {u"Atilde", u"\u00C3"}, {u"Auml", u"\u00C4"},   {u"Aring", u"\u00C5"},  {u"AElig", u"\u00C6"},
    {u"Ccedil", u"\u00C7"}, {u"Egrave", u"\u00C8"}, {u"Eacute", u"\u00C9"}, {u"Ecirc", u"\u00CA"},
    {u"Euml", u"\u00CB"},   {u"Igrave", u"\u00CC"}, {u"Iacute", u"\u00CD"}, {u"Icirc", u"\u00CE"},
    {u"Iuml", u"\u00CF"},   {u"ETH", u"\u00D0"},    {u"Ntilde", u"\u00D1"}, {u"Ograve", u"\u00D2"},
    {u"Oacute", u"\u00D3"}, {u"Ocirc", u"\u00D4"},  {u"Otilde", u"\u00D5"}, {u"Ouml", u"\u00D6"},
    {u"Oslash", u"\u00D8"}, {u"Ugrave", u"\u00D9"}, {u"Uacute", u"\u00DA"}, {u"Ucirc", u"\u00DB"},
    {u"Uuml", u"\u00DC"},   {u"Yacute", u"\u00DD"}, {u"THORN", u"\u00DE"},  {u"szlig", u"\u00DF"},
    {u"agrave", u"\u00E0"}, {u"aacute", u"\u00E1"}, {u"acirc", u"\u00E2"},  {u"atilde", u"\u00E3"},
    {u"auml", u"\u00E4"},   {u"aring", u"\u00E5"},  {u"aelig", u"\u00E6"},  {u"ccedil", u"\u00E7"},
    {u"egrave", u"\u00E8"}, {u"eacute", u"\u00E9"}, {u"ecirc", u"\u00EA"},  {u"euml", u"\u00EB"},
    {u"igrave", u"\u00EC"}, {u"iacute", u"\u00ED"}, {u"icirc", u"\u00EE"},  {u"iuml", u"\u00EF"},
    {u"eth", u"\u00F0"},    {u"ntilde", u"\u00F1"}, {u"ograve", u"\u00F2"}, {u"oacute", u"\u00F3"},
    {u"ocirc", u"\u00F4"},  {u"otilde", u"\u00F5"}, {u"ouml", u"\u00F6"},   {u"oslash", u"\u00F8"},
    {u"ugrave", u"\u00F9"}, {u"uacute", u"\u00FA"}, {u"ucirc", u"\u00FB"},  {u"uuml", u"\u00FC"},
    {u"yacute", u"\u00FD"}, {u"thorn", u"\u00FE"},  {u"yuml", u"\u00FF"},   {u"oelig", u"\u009C"},
    {u"OElig", u"\u008C"},  {u"notin", u"\uA1FE"},  {u"lsquo", u"\u0091"},  {u"rsquo", u"\u0092"},
    {u"ldquo", u"\u0093"},  {u"rdquo", u"\u0094"},  {u"Eacute", u"\u00C9"}, {u"Oacute", u"\u00D3"},
    {u"eacute", u"\u00E9"}, {u"oacute", u"\u00F3"},
}};

}  // namespace mailslice::html
