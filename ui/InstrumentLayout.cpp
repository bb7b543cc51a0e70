#include "ui/InstrumentLayout.h"

#include <atomic>

namespace {
// The 800x600 row is the 1024x768 one scaled by 25/32 and rounded, except where a finger still
// needs the full size (keys, list rows, scroll bar).
const int kMetrics[eDisplayVariantCount][eLayoutMetricCount] = {
    {80, 24, 24, 180, 64, 16, 48, 12, 110, 768, 56, 80, 64, 8, 48, 16, 40, 48, 240, 60, 8, 2},
    {62, 19, 19, 141, 50, 12, 38, 9, 86, 600, 44, 64, 56, 6, 44, 12, 40, 38, 188, 47, 6, 2},
};
const double kScales[eDisplayVariantCount][eLayoutScaleCount] = {
    {1.0, 1.0, 1.0, 1.0, 1.0, 1.0},
    {0.78125, 0.78125, 0.8, 0.78125, 1.0, 1.25},
};

std::atomic<int> g_displayVariant{eDisplay1024x768};

bool IsVariant(int variant) { return variant >= 0 && variant < eDisplayVariantCount; }
}  // namespace

CInstrumentViewLayer::CInstrumentViewLayer() {
    for (int i = 0; i < eLayoutMetricCount; ++i) m_metrics[i] = kMetrics[eDisplay1024x768][i];
    for (int i = 0; i < eLayoutScaleCount; ++i) m_scales[i] = kScales[eDisplay1024x768][i];
}

CInstrumentViewLayer::~CInstrumentViewLayer() = default;

bool CInstrumentViewLayer::SelectDisplayVariant(int variant) {
    if (!IsVariant(variant)) return false;
    for (int i = 0; i < eLayoutMetricCount; ++i) m_metrics[i] = kMetrics[variant][i];
    if (!m_scalesTaken) {
        for (int i = 0; i < eLayoutScaleCount; ++i) m_scales[i] = kScales[variant][i];
        m_scalesTaken = true;
    }
    return true;
}

int CInstrumentViewLayer::GetMetric(eLayoutMetric metric) const {
    return metric >= 0 && metric < eLayoutMetricCount ? m_metrics[metric] : 0;
}

double CInstrumentViewLayer::GetScale(eLayoutScale scale) const {
    return scale >= 0 && scale < eLayoutScaleCount ? m_scales[scale] : 1.0;
}

int CInstrumentViewLayer::GetMetricOfVariant(int variant, eLayoutMetric metric) {
    if (!IsVariant(variant) || metric < 0 || metric >= eLayoutMetricCount) return 0;
    return kMetrics[variant][metric];
}

double CInstrumentViewLayer::GetScaleOfVariant(int variant, eLayoutScale scale) {
    if (!IsVariant(variant) || scale < 0 || scale >= eLayoutScaleCount) return 1.0;
    return kScales[variant][scale];
}

CInstrumentViewLayer& GetInstrumentViewLayer() {
    static CInstrumentViewLayer layer;
    return layer;
}

int GetDisplayVariant() { return g_displayVariant.load(); }

void SetDisplayVariant(int variant) { g_displayVariant.store(variant); }
