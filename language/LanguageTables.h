#pragma once
// The compiled-in text tables. Each array is generated from its PO file (language/texts) by
// tools/gen_texts.py at build time, in a unit of its own; the generator refuses a table that does
// not hold exactly its text ids. The arrays are built during static initialisation and are
// constant afterwards, so they may be read from any thread once main() runs.

#include <cstdint>
#include <string>

namespace NS_LanguageTexts {

// Ids 0..567 live in the per-language tables, 568..650 in the untranslated developer table.
constexpr uint32_t kTableSize = 568;
constexpr uint32_t kDeveloperFirstId = 568;
constexpr uint32_t kDeveloperCount = 83;
constexpr uint32_t kLastTextId = kDeveloperFirstId + kDeveloperCount - 1;  // 650
constexpr int kLanguageCount = 10;

extern const std::string TEXTS_EN[kTableSize];
extern const std::string TEXTS_DA[kTableSize];
extern const std::string TEXTS_SV[kTableSize];
extern const std::string TEXTS_IT[kTableSize];
extern const std::string TEXTS_NL[kTableSize];
extern const std::string TEXTS_FR[kTableSize];
extern const std::string TEXTS_ES[kTableSize];
extern const std::string TEXTS_DE[kTableSize];
extern const std::string TEXTS_JA[kTableSize];
extern const std::string TEXTS_ZH[kTableSize];
// English in the wording of the Pellam-branded instrument; 558..567 are empty on purpose.
extern const std::string TEXTS_EN_PELLAM[kTableSize];
// Ids 568..650, index = id - kDeveloperFirstId.
extern const std::string TEXTS_DEV[kDeveloperCount];

// The table of a language value (eInstrumentLanguage); null for a value outside 0..9.
const std::string* GetLanguageTable(int language);

}  // namespace NS_LanguageTexts
