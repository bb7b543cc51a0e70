#pragma once
// The view layer's layout values: one row of integer metrics and one row of scale factors per
// display variant. The main controller selects the row of the current variant at start-up; the
// view layer object that carries the selection is handed to every view as its second creation
// need.

#include <cstddef>

enum eLayoutMetric {
    eLayoutHeaderHeight = 0,
    eLayoutTitleMargin,
    eLayoutBodyMargin,
    eLayoutButtonWidth,
    eLayoutButtonHeight,
    eLayoutButtonGap,
    eLayoutFieldHeight,
    eLayoutFieldGap,
    eLayoutStatusLineHeight,
    eLayoutProgressBarWidth,
    eLayoutProgressBarHeight,
    eLayoutKeyWidth,
    eLayoutKeyHeight,
    eLayoutKeyGap,
    eLayoutListRowHeight,
    eLayoutListColumnGap,
    eLayoutScrollBarWidth,
    eLayoutIconSize,
    eLayoutLogoWidth,
    eLayoutLogoHeight,
    eLayoutCornerRadius,
    eLayoutFrameWidth,
    eLayoutMetricCount  // 22
};

enum eLayoutScale {
    eScaleHorizontal = 0,
    eScaleVertical,
    eScaleFont,
    eScaleImage,
    eScaleLineWidth,
    eScaleTouchTolerance,
    eLayoutScaleCount  // 6
};

enum eDisplayVariant {
    eDisplay1024x768 = 0,  // the instrument's touch screen
    eDisplay800x600 = 1,
    eDisplayVariantCount
};

class CInstrumentViewLayer {
public:
    CInstrumentViewLayer();
    virtual ~CInstrumentViewLayer();
    CInstrumentViewLayer(const CInstrumentViewLayer&) = delete;
    CInstrumentViewLayer& operator=(const CInstrumentViewLayer&) = delete;

    // Copies the variant's metrics; its scales only on the first call of the process, so views
    // that scaled their images once keep matching them. An unknown variant selects nothing.
    bool SelectDisplayVariant(int variant);

    int GetMetric(eLayoutMetric metric) const;
    double GetScale(eLayoutScale scale) const;

    static int GetMetricOfVariant(int variant, eLayoutMetric metric);
    static double GetScaleOfVariant(int variant, eLayoutScale scale);

private:
    int m_metrics[eLayoutMetricCount];
    double m_scales[eLayoutScaleCount];
    bool m_scalesTaken = false;
};

// The application-wide view layer object. GUI thread.
CInstrumentViewLayer& GetInstrumentViewLayer();

// The application-wide display-variant index (eDisplay1024x768 unless set).
int GetDisplayVariant();
void SetDisplayVariant(int variant);
