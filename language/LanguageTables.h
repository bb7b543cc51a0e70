#pragma once
// The compiled-in text tables. Each array is generated from its PO file (language/texts) by
// tools/gen_texts.py at build time, in a unit of its own; the generator refuses a table that does
// not hold exactly its text ids. The arrays are built during static initialisation and are
// constant afterwards, so they may be read from any thread once main() runs.

#include <cstdint>
#include <string>

namespace NS_LanguageTexts {

// Ids 0..567 and 651.. are translated and live in the per-language tables, 568..650 in the
// untranslated developer table. Ids never move, so translated texts added after the developer
// table could only follow it: the update texts, 651 on. A language table holds 0..567 at
// index = id, then the update texts (LanguageTableIndex). The build reads the plain numbers below
// to generate the tables, so each range is set here alone.
constexpr uint32_t kTableSize = 568;
constexpr uint32_t kDeveloperFirstId = 568;
constexpr uint32_t kDeveloperCount = 83;
constexpr uint32_t kUpdateFirstId = 651;
constexpr uint32_t kUpdateCount = 1;
constexpr uint32_t kDeveloperLastId = kDeveloperFirstId + kDeveloperCount - 1;  // 650
constexpr uint32_t kLastTextId = kUpdateFirstId + kUpdateCount - 1;             // 651
constexpr uint32_t kLanguageTableSize = kTableSize + kUpdateCount;
constexpr int kLanguageCount = 10;
static_assert(kDeveloperFirstId == kTableSize && kUpdateFirstId == kDeveloperLastId + 1,
              "the ranges follow each other without a gap");

// The update texts (update/).
constexpr uint32_t kTextUpdateNotSigned = 651;  // status line, followed by "... (19)"
static_assert(kTextUpdateNotSigned >= kUpdateFirstId && kTextUpdateNotSigned <= kLastTextId,
              "an update text needs its entry in every language table and kUpdateCount to cover it");

extern const std::string TEXTS_EN[kLanguageTableSize];
extern const std::string TEXTS_DA[kLanguageTableSize];
extern const std::string TEXTS_SV[kLanguageTableSize];
extern const std::string TEXTS_IT[kLanguageTableSize];
extern const std::string TEXTS_NL[kLanguageTableSize];
extern const std::string TEXTS_FR[kLanguageTableSize];
extern const std::string TEXTS_ES[kLanguageTableSize];
extern const std::string TEXTS_DE[kLanguageTableSize];
extern const std::string TEXTS_JA[kLanguageTableSize];
extern const std::string TEXTS_ZH[kLanguageTableSize];
// English in the wording of the Pellam-branded instrument; 558..567 are empty on purpose.
extern const std::string TEXTS_EN_PELLAM[kLanguageTableSize];
// Ids 568..650, index = id - kDeveloperFirstId.
extern const std::string TEXTS_DEV[kDeveloperCount];

// The table of a language value (eInstrumentLanguage); null for a value outside 0..9.
const std::string* GetLanguageTable(int language);
// Where a translated text is in a language table; an id without one gets 0, the empty text.
constexpr uint32_t LanguageTableIndex(uint32_t textId) {
    if (textId < kTableSize) return textId;
    if (textId >= kUpdateFirstId && textId <= kLastTextId) return kTableSize + (textId - kUpdateFirstId);
    return 0;
}

}  // namespace NS_LanguageTexts
