// CIIRFilter: up to four second-order sections in a row, in direct form I or II, one sample at a time.
//
// Units:   samples of any scale, as doubles; the filter knows no rate. A new filter has no sections and passes nothing.
// Errors:  a number of sections outside 0 to 4 counts as none: the sample comes back scaled by m_Coef[0].
// Threads: one at a time.

#pragma once

class CIIRFilterBase
{
public:
    virtual ~CIIRFilterBase() = default;
};

class CIIRFilter : public CIIRFilterBase
{
public:
    static constexpr int MAX_SECTIONS = 4;
    static constexpr int COEFFICIENTS = 21; // a gain, and five for each section of form 0 or four for each of form 1
    static constexpr int STATES = 10;
    // Where the recursion would go on with a smaller magnitude it goes on with zero, ahead of the denormal numbers.
    static constexpr double FLUSH_BELOW = 1e-150;

    // The next output. The work is straight-line for each size, with no allocation.
    double Filter(double fSample);

    int m_nSections = 0; // 0 to 4
    int m_nForm = 0;     // 0 direct form I, anything else direct form II

    // Form 0: [0] is not applied; section k has b0, b1, b2, a1, a2 at [5k + 1].
    // Form 1: [0] scales the input;  section k has a1, a2, b1, b2 at [4k + 1], and its b0 is 1.
    // The signs are those of 1 + a1/z + a2/zz in the denominator.
    double m_Coef[COEFFICIENTS] = {};

    // Form 0: [0] and [1] are the inputs before, newest first; [2k + 2] and [2k + 3] the outputs of section k.
    // Form 1: [2k] and [2k + 1] are the inner values of section k, newest first.
    double m_State[STATES] = {};

private:
    double FilterForm0(double fSample);
    double FilterForm1(double fSample);
};
