#include "language/InstrumentLanguage.h"

#include "foundation/common/InstrumentCommonData.h"
#include "foundation/InstrumentEnums.h"
#include "foundation/InstrumentSettings.h"
#include "language/LanguageTables.h"
#include "ui/InstrumentFont.h"
#include "ui/TextControl.h"

using namespace NS_LanguageTexts;

namespace NS_LanguageTexts {

const std::string* GetLanguageTable(int language) {
    // Order of eInstrumentLanguage.
    static const std::string* const kTables[kLanguageCount] = {
        TEXTS_EN, TEXTS_DA, TEXTS_SV, TEXTS_IT, TEXTS_NL, TEXTS_FR, TEXTS_ES, TEXTS_DE, TEXTS_JA, TEXTS_ZH,
    };
    if (language < 0 || language >= kLanguageCount) return nullptr;
    return kTables[language];
}

}  // namespace NS_LanguageTexts

namespace {

// The program-wide remembered labels; entries are never removed.
std::vector<CInstrumentLanguage::CTextFieldLanguageId>& RememberedLabels() {
    static std::vector<CInstrumentLanguage::CTextFieldLanguageId> labels;
    return labels;
}

void Remember(const CInstrumentLanguage::CTextFieldLanguageId& label) {
    std::vector<CInstrumentLanguage::CTextFieldLanguageId>& labels = RememberedLabels();
    labels.push_back(label);
}

const CInstrumentLanguageSource& SettingSource() {
    static const CInstrumentLanguageSettingSource setting{};
    return setting;
}

}  // namespace

int CInstrumentLanguageSettingSource::GetLanguage() const { return GetSettingLanguage(); }

int CInstrumentLanguageSettingSource::GetLanguageValue() const { return GetSettingLanguage(); }

CInstrumentLanguageText::~CInstrumentLanguageText() = default;

CInstrumentLanguageDef::CInstrumentLanguageDef(const CInstrumentLanguageSource* source) : m_source(source) {}

const std::string& CInstrumentLanguageDef::GetText(uint32_t textId) const {
    return GetTextForLanguage(textId, m_source ? m_source->GetLanguage() : eLanguageEnglish);
}

bool CInstrumentLanguageDef::IsRomanceLanguage() const {
    const int value = m_source ? m_source->GetLanguageValue() : eLanguageEnglish;
    return value == eLanguageItalian || value == eLanguageFrench || value == eLanguageSpanish;
}

const std::string& CInstrumentLanguageDef::GetTextForLanguage(uint32_t textId, int language) const {
    // The developer and service texts exist in English only and do not depend on the branding.
    if (textId >= kDeveloperFirstId && textId <= kDeveloperLastId) return TEXTS_DEV[textId - kDeveloperFirstId];
    const uint32_t index = LanguageTableIndex(textId);
    if (static_cast<unsigned>(language) >= static_cast<unsigned>(kLanguageCount)) language = eLanguageEnglish;
    if (GetTextInstrumentType() == eInstrumentPellamZento) return TEXTS_EN_PELLAM[index];
    return GetLanguageTable(language)[index];
}

int CInstrumentLanguageDef::GetTextInstrumentType() {
    static const int type = GetInstrumentType();
    return type;
}

bool CInstrumentLanguageDef::IsLanguageAvailable(int language) {
    if (language < 0 || language >= kLanguageCount) return false;
    const int type = GetTextInstrumentType();
    switch (language) {
        case eLanguageEnglish: return true;
        case eLanguageFrench: return type != eInstrumentPellamZento && type != eInstrumentLumetTandem;
        case eLanguageSpanish: return type != eInstrumentPellamZento;
        default: return type == eInstrumentKorvalin;
    }
}

int CInstrumentLanguageDef::CountAvailableLanguages() {
    int count = 0;
    // A saturating enumeration steps past its last member into an invalid value, which ends the walk.
    for (CInstrumentLanguageEnum language(eLanguageEnglish); language.IsValid(); language.Next())
        if (IsLanguageAvailable(language.GetValue())) ++count;
    return count;
}

const std::string& CInstrumentLanguageDef::GetPlaceholder() {
    static const std::string placeholder("<TAG_AMOUNT>");
    return placeholder;
}

size_t CInstrumentLanguageDef::GetPlaceholderLength() { return GetPlaceholder().size(); }

CInstrumentLanguage::CFormatText::~CFormatText() = default;

void CInstrumentLanguage::CColonAdder::Format(CTextBearingControl*, uint32_t, std::string& text,
                                              const CInstrumentLanguage&) const {
    if (!text.empty()) text += ':';
}

CInstrumentLanguage::CInstrumentLanguage() : CInstrumentLanguageDef(&SettingSource()) {}

CInstrumentLanguage::CInstrumentLanguage(const CInstrumentLanguageSource* source)
    : CInstrumentLanguageDef(source) {}

void CInstrumentLanguage::SetControlText(CTextBearingControl* control, uint32_t textId,
                                         const CFormatText* formatter) const {
    if (!control) return;
    std::string text = GetText(textId);
    if (formatter) formatter->Format(control, textId, text, *this);
    control->SetControlText(text);
}

void CInstrumentLanguage::SetControlTextAndRemember(CTextBearingControl* control, uint32_t textId,
                                                    const CFormatText* formatter) const {
    SetControlText(control, textId, formatter);
    Remember(CTextFieldLanguageId(control, textId, formatter));
}

void CInstrumentLanguage::RefreshAllTexts() const {
    // The new language may need another face (Japanese, Chinese): fonts first, so that the
    // controls repaint their new texts with glyphs that exist.
    RefreshInstrumentFonts();
    // By index and by copy: a control may remember further labels while it is being labelled.
    const std::vector<CTextFieldLanguageId>& labels = RememberedLabels();
    for (size_t i = 0; i < labels.size(); ++i) {
        const CTextFieldLanguageId label = labels[i];
        SetControlText(label.GetControl(), label.GetTextId(), label.GetFormatter());
    }
}

bool CInstrumentLanguage::ReapplyText(const CTextBearingControl* control) const {
    for (const CTextFieldLanguageId& found : RememberedLabels()) {
        if (found.GetControl() == control) {
            const CTextFieldLanguageId label = found;
            SetControlText(label.GetControl(), label.GetTextId(), label.GetFormatter());
            return true;
        }
    }
    return false;
}

const std::vector<CInstrumentLanguage::CTextFieldLanguageId>& CInstrumentLanguage::GetRememberedLabels() {
    return RememberedLabels();
}

CInstrumentLanguage& GetInstrumentLanguage() {
    static CInstrumentLanguage language;
    return language;
}

const std::string& GetText(uint32_t textId) { return GetInstrumentLanguage().GetText(textId); }
