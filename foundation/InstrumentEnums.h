#pragma once
// The closed sets of choices of the instrument, each held in a bounded enumeration object.

#include "foundation/EnumType.h"

enum eInstrumentLanguage {
    eLanguageEnglish = 0,
    eLanguageDanish,
    eLanguageSwedish,
    eLanguageItalian,
    eLanguageDutch,
    eLanguageFrench,
    eLanguageSpanish,
    eLanguageGerman,
    eLanguageJapanese,
    eLanguageChinese,
};
enum eInstrumentDateFormat { eDateFormatUS = 0, eDateFormatEU = 1 };
enum eInstrumentBeepFrequency { eBeep2300Hz = 0, eBeep2500Hz, eBeep2700Hz, eBeep2900Hz };
enum eBeepAudioReminder { eBeepOnce = 0, eBeep10Sec, eBeep30Sec, eBeep60Sec };
enum eInstrumentBoolean { eInstrumentFalse = 0, eInstrumentTrue = 1 };
// 0 "Korvalin Analyzer", 1 "Pellam Zento", 2 "Lumet Tandem COAG": selects branding, offered
// languages and images.
enum eInstrumentType { eInstrumentKorvalin = 0, eInstrumentPellamZento = 1, eInstrumentLumetTandem = 2 };
enum eKorvalinType { eKorvalinStandard = 0, eKorvalinPlus = 1 };
enum eXmlDateTokens { eXmlDateYear = 0, eXmlDateMonth, eXmlDateDay };
enum eXmlTimeTokens { eXmlTimeHour = 0, eXmlTimeMinute, eXmlTimeSecond };
enum eDateTokenCPP { eDateTokenMonth = 0, eDateTokenDay, eDateTokenYear };
enum eTimeTokenCPP { eTimeTokenHour = 0, eTimeTokenMinute, eTimeTokenSecond };
// The type name is spelled "Montsh" on purpose: the framework has always called it so.
enum eMontshInYear {
    eJanuary = 0,
    eFebruary,
    eMarch,
    eApril,
    eMay,
    eJune,
    eJuly,
    eAugust,
    eSeptember,
    eOctober,
    eNovember,
    eDecember
};
enum ePredictorAlgorithm { ePredictorFirst = 0, ePredictorLast = 26 };

namespace NS_ChineseLiteration {
enum eChineseLiterationOption { eChineseNone = 0, eChinesePinyin = 1, eChineseBopomofo = 2 };
}
namespace NS_JapaneseLiteration {
enum eJapaneseLiterationOption { eJapaneseNone = 0, eJapaneseRomaji = 1, eJapaneseKana = 2 };
}

// The special command from the command line: 0 normal update, 1 the reduced update; any other
// number is carried but acts like 0.
typedef unsigned int eUpdateCommandLineSpecialCmdParamCmd;

using CInstrumentLanguageEnum = CEnumType<eInstrumentLanguage, 10, false>;
using CSafeInstrumentLanguageEnum = CSafeEnumType<eInstrumentLanguage, 10, false>;
using CInstrumentDateFormatEnum = CEnumType<eInstrumentDateFormat, 2, false>;
using CSafeInstrumentDateFormatEnum = CSafeEnumType<eInstrumentDateFormat, 2, false>;
using CInstrumentBeepFrequencyEnum = CEnumType<eInstrumentBeepFrequency, 4, false>;
using CSafeInstrumentBeepFrequencyEnum = CSafeEnumType<eInstrumentBeepFrequency, 4, false>;
using CBeepAudioReminderEnum = CEnumType<eBeepAudioReminder, 4, true>;
using CBeepAudioReminderSaturatingEnum = CEnumType<eBeepAudioReminder, 4, false>;
using CSafeBeepAudioReminderEnum = CSafeEnumType<eBeepAudioReminder, 4, true>;
using CInstrumentBooleanEnum = CEnumType<eInstrumentBoolean, 2, false>;
using CInstrumentTypeEnum = CEnumType<eInstrumentType, 3, false>;
using CKorvalinTypeEnum = CEnumType<eKorvalinType, 2, true>;
using CKorvalinTypeSaturatingEnum = CEnumType<eKorvalinType, 2, false>;
using CXmlDateTokensEnum = CEnumType<eXmlDateTokens, 3, false>;
using CXmlTimeTokensEnum = CEnumType<eXmlTimeTokens, 3, false>;
using CDateTokenCPPEnum = CEnumType<eDateTokenCPP, 3, false>;
using CTimeTokenCPPEnum = CEnumType<eTimeTokenCPP, 3, false>;
using CMontshInYearEnum = CEnumType<eMontshInYear, 12, false>;
using CPredictorAlgorithmEnum = CEnumType<ePredictorAlgorithm, 27, false>;
using CChineseLiterationEnum = CEnumType<NS_ChineseLiteration::eChineseLiterationOption, 3, true>;
using CChineseLiterationSaturatingEnum = CEnumType<NS_ChineseLiteration::eChineseLiterationOption, 3, false>;
using CSafeChineseLiterationEnum = CSafeEnumType<NS_ChineseLiteration::eChineseLiterationOption, 3, true>;
using CJapaneseLiterationEnum = CEnumType<NS_JapaneseLiteration::eJapaneseLiterationOption, 3, true>;
using CJapaneseLiterationSaturatingEnum = CEnumType<NS_JapaneseLiteration::eJapaneseLiterationOption, 3, false>;
using CSafeJapaneseLiterationEnum = CSafeEnumType<NS_JapaneseLiteration::eJapaneseLiterationOption, 3, true>;

// The analyser model, read by the worker thread and the GUI thread.
class CSafeKorvalinType : public CSafeEnumType<eKorvalinType, 2, true> {
public:
    CSafeKorvalinType() : CSafeEnumType<eKorvalinType, 2, true>(eKorvalinStandard) {}
};
