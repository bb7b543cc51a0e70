#pragma once
// Every user-visible text is addressed by a text id and looked up in the compiled-in table of the
// current display language. CInstrumentLanguage also labels controls and remembers which control
// shows which id, so that a language change can re-label them all.
//
// Lookups only read constant tables and may come from any thread. Labelling controls and the
// list of remembered labels belong to the GUI thread.

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

class CTextBearingControl;

// Where the current display language comes from: the language setting, or another object of the
// instrument that knows it. GetLanguage answers the text lookups, GetLanguageValue the language
// object's question whether the language is a Romance one.
class CInstrumentLanguageSource {
public:
    virtual ~CInstrumentLanguageSource() = default;
    // A value of eInstrumentLanguage; anything outside 0..9 is shown in English.
    virtual int GetLanguage() const = 0;
    // The same value as a plain number.
    virtual int GetLanguageValue() const = 0;
};

// The "Language" setting of the settings file.
class CInstrumentLanguageSettingSource : public CInstrumentLanguageSource {
public:
    int GetLanguage() const override;
    int GetLanguageValue() const override;
};

class CInstrumentLanguageText {
public:
    virtual ~CInstrumentLanguageText();
    // The text for the current language. The reference stays valid for the life of the program.
    virtual const std::string& GetText(uint32_t textId) const = 0;
    // True when the source's language value is 3, 5 or 6 (Italian, French, Spanish): their phrases
    // put a qualifier after the noun, so a screen that joins two texts into one label swaps them.
    virtual bool IsRomanceLanguage() const = 0;
};

class CInstrumentLanguageDef : public CInstrumentLanguageText {
public:
    // The source is not owned and must outlive this object; null means English.
    explicit CInstrumentLanguageDef(const CInstrumentLanguageSource* source);

    const std::string& GetText(uint32_t textId) const override;
    bool IsRomanceLanguage() const override;
    // The lookup with an explicit language. Never fails: an id without a text gives the empty
    // text of id 0, a language outside 0..9 (negative values included) gives English. Ids 568 to
    // 650 are the untranslated developer texts, the same in every language; 0..567 and the update
    // texts from 651 on are translated. An instrument of type 1 shows its own English wording
    // whatever the language.
    virtual const std::string& GetTextForLanguage(uint32_t textId, int language) const;

    // Which languages the instrument offers: type 0 all ten, type 1 English only, type 2 English
    // and Spanish. A value above 9 is never available.
    static bool IsLanguageAvailable(int language);
    static int CountAvailableLanguages();

    // The instrument type the texts follow: the type at the first lookup of a translated text,
    // kept for the rest of the run (branding does not change under a running program).
    static int GetTextInstrumentType();

    // The mark that a text receives a run-time value where it is shown.
    static const std::string& GetPlaceholder();  // "<TAG_AMOUNT>"
    static size_t GetPlaceholderLength();        // 12

private:
    const CInstrumentLanguageSource* m_source;
};

class CInstrumentLanguage : public CInstrumentLanguageDef {
public:
    // Rewrites a looked-up text before it goes to the control.
    class CFormatText {
    public:
        virtual ~CFormatText();
        virtual void Format(CTextBearingControl* control, uint32_t textId, std::string& text,
                            const CInstrumentLanguage& language) const = 0;
    };

    // Appends ":" to a label; an empty text stays empty, so a hidden label shows no stray colon.
    class CColonAdder : public CFormatText {
    public:
        void Format(CTextBearingControl* control, uint32_t textId, std::string& text,
                    const CInstrumentLanguage& language) const override;
    };

    // A remembered label.
    class CTextFieldLanguageId {
    public:
        CTextFieldLanguageId(CTextBearingControl* control, uint32_t textId, const CFormatText* formatter)
            : m_control(control), m_textId(textId), m_formatter(formatter) {}
        virtual ~CTextFieldLanguageId() = default;
        CTextFieldLanguageId(const CTextFieldLanguageId&) = default;
        CTextFieldLanguageId& operator=(const CTextFieldLanguageId&) = default;

        CTextBearingControl* GetControl() const { return m_control; }
        uint32_t GetTextId() const { return m_textId; }
        const CFormatText* GetFormatter() const { return m_formatter; }

    private:
        CTextBearingControl* m_control;  // not owned
        uint32_t m_textId;
        const CFormatText* m_formatter;  // not owned, may be null
    };

    // Follows the "Language" setting.
    CInstrumentLanguage();
    explicit CInstrumentLanguage(const CInstrumentLanguageSource* source);

    // GUI thread. Looks the text up, lets the formatter (if any) rewrite it and hands it to the
    // control. A null control is skipped.
    void SetControlText(CTextBearingControl* control, uint32_t textId,
                        const CFormatText* formatter = nullptr) const;
    // The same, and remembers the label for RefreshAllTexts and ReapplyText. Labels are never
    // forgotten: a control must outlive every later RefreshAllTexts.
    void SetControlTextAndRemember(CTextBearingControl* control, uint32_t textId,
                                   const CFormatText* formatter = nullptr) const;
    // GUI thread, after the language changed: re-creates the fonts for the new language, then
    // re-labels every remembered control in the order in which it was remembered.
    void RefreshAllTexts() const;
    // Re-labels a control from its first remembered label; false (and nothing done) when the
    // control was never remembered.
    bool ReapplyText(const CTextBearingControl* control) const;

    // The labels remembered so far, program-wide, in order (GUI thread).
    static const std::vector<CTextFieldLanguageId>& GetRememberedLabels();
};

// The program's language object, following the "Language" setting. Usable from any thread once
// main() runs.
CInstrumentLanguage& GetInstrumentLanguage();
// GetInstrumentLanguage().GetText(textId).
const std::string& GetText(uint32_t textId);
