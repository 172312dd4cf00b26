// The character references the HTML-to-text conversion decodes: six groups of numeric
// references, each tried only when the text holds its trigger, and the named references. Some
// replacements are deliberately Windows code page bytes held as wide characters rather than
// Unicode ("&euro;" is U+0080, "&#346;" is U+008C), as the device's mail reader shows them.
#ifndef MAILSLICE_HTML_ENTITY_TABLES_H
#define MAILSLICE_HTML_ENTITY_TABLES_H

#include <array>
#include <span>
#include <string_view>

namespace mailslice::html {

// One row: the reference as written between "&" and ";", and the text that replaces it.
struct EntityRow {
  std::u16string_view entity;
  std::u16string_view replacement;
};

struct EntityGroup {
  std::u16string_view trigger;
  std::span<const EntityRow> rows;
};

inline constexpr size_t kNumericEntityGroupCount = 6;
inline constexpr size_t kNamedEntityCount = 114;

// In the order they are applied.
extern const std::array<EntityGroup, kNumericEntityGroupCount> kNumericEntityGroups;
extern const std::array<EntityRow, kNamedEntityCount> kNamedEntities;

}  // namespace mailslice::html

#endif  // MAILSLICE_HTML_ENTITY_TABLES_H
