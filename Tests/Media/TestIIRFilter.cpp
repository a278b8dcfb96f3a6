#include "IIRFilter.h"
#include <cmath>
#include <cstdint>
#include <cstring>
#include <gtest/gtest.h>
#include <limits>
#include <random>
#include <type_traits>

static_assert(std::is_base_of_v<CIIRFilterBase, CIIRFilter>);
static_assert(std::has_virtual_destructor_v<CIIRFilter>);
static_assert(sizeof(CIIRFilter) == 8 + 4 + 4 + 21 * 8 + 10 * 8);
static_assert(std::is_same_v<decltype(CIIRFilter::m_nSections), int>);
static_assert(std::is_same_v<decltype(CIIRFilter::m_Coef), double[21]>);
static_assert(std::is_same_v<decltype(CIIRFilter::m_State), double[10]>);

namespace
{
CIIRFilter MakeFilter(int nSections, int nForm)
{
    CIIRFilter filter;
    filter.m_nSections = nSections;
    filter.m_nForm = nForm;
    return filter;
}

// Places a section of direct form I.
void SetForm0(CIIRFilter& filter, int nSection, double b0, double b1, double b2, double a1, double a2)
{
    const double ary[] = {b0, b1, b2, a1, a2};
    for (int i = 0; i < 5; ++i)
        filter.m_Coef[5 * nSection + 1 + i] = ary[i];
}

// Places a section of direct form II.
void SetForm1(CIIRFilter& filter, int nSection, double a1, double a2, double b1, double b2)
{
    const double ary[] = {a1, a2, b1, b2};
    for (int i = 0; i < 4; ++i)
        filter.m_Coef[4 * nSection + 1 + i] = ary[i];
}

// The layout's sentences once more, in another way of writing: one flat recursion over plain numbers.
class Model
{
public:
    explicit Model(const CIIRFilter& filter) : m_nSections(filter.m_nSections), m_nForm(filter.m_nForm)
    {
        memcpy(c, filter.m_Coef, sizeof c);
        memcpy(s, filter.m_State, sizeof s);
    }
    double Step(double x) { return m_nForm == 0 ? StepForm0(x) : StepForm1(x); }

    double s[10];

private:
    static double Flush(double f) { return std::fabs(f) < 1e-150 ? 0.0 : f; }
    double StepForm0(double x)
    {
        if (m_nSections == 0 || m_nSections == 3)
            return c[0] * x;
        const double y1 = Flush(c[1] * x + c[2] * s[0] + c[3] * s[1] - c[4] * s[2] - c[5] * s[3]);
        const double y2 = Flush(c[6] * y1 + c[7] * s[2] + c[8] * s[3] - c[9] * s[4] - c[10] * s[5]);
        const double y3 = Flush(c[11] * y2 + c[12] * s[4] + c[13] * s[5] - c[14] * s[6] - c[15] * s[7]);
        const double y4 = Flush(c[16] * y3 + c[17] * s[6] + c[18] * s[7] - c[19] * s[8] - c[20] * s[9]);
        const double aryNew[] = {x, y1, y2, y3, y4};
        for (int k = 0; k <= m_nSections; ++k)
        {
            s[2 * k + 1] = s[2 * k];
            s[2 * k] = aryNew[k];
        }
        return aryNew[m_nSections];
    }
    double StepForm1(double x)
    {
        double f = c[0] * x;
        for (int k = 0; k < m_nSections; ++k)
        {
            const double w = Flush(f - c[4 * k + 1] * s[2 * k] - c[4 * k + 2] * s[2 * k + 1]);
            f = w + c[4 * k + 3] * s[2 * k] + c[4 * k + 4] * s[2 * k + 1];
            s[2 * k + 1] = s[2 * k];
            s[2 * k] = w;
        }
        return f;
    }

    int m_nSections;
    int m_nForm;
    double c[21];
};
} // namespace

TEST(IIRFilter, StartsWithNothing)
{
    CIIRFilter filter;
    EXPECT_EQ(filter.m_nSections, 0);
    EXPECT_EQ(filter.m_nForm, 0);
    for (double f : filter.m_Coef)
        EXPECT_EQ(f, 0);
    for (double f : filter.m_State)
        EXPECT_EQ(f, 0);
    EXPECT_EQ(filter.Filter(1), 0);
}

TEST(IIRFilter, LiesInMemoryInTheOrderOfItsMembers)
{
    CIIRFilter filter;
    const char* pStart = reinterpret_cast<const char*>(&filter);
    EXPECT_EQ(reinterpret_cast<const char*>(&filter.m_nSections) - pStart, 8);
    EXPECT_EQ(reinterpret_cast<const char*>(&filter.m_nForm) - pStart, 12);
    EXPECT_EQ(reinterpret_cast<const char*>(&filter.m_Coef) - pStart, 16);
    EXPECT_EQ(reinterpret_cast<const char*>(&filter.m_State) - pStart, 16 + 168);
}

TEST(IIRFilter, WithoutSectionsScalesInBothForms)
{
    for (int nForm : {0, 1, -5})
    {
        CIIRFilter filter = MakeFilter(0, nForm);
        filter.m_Coef[0] = 3;
        EXPECT_EQ(filter.Filter(2), 6);
        EXPECT_EQ(filter.m_State[0], 0);
    }
}

TEST(IIRFilter, Form0WithThreeSectionsOnlyScales)
{
    CIIRFilter filter = MakeFilter(3, 0);
    filter.m_Coef[0] = 0.5;
    for (int k = 0; k < 3; ++k)
        SetForm0(filter, k, 7, 7, 7, 7, 7);
    EXPECT_EQ(filter.Filter(8), 4);
    EXPECT_EQ(filter.Filter(8), 4);
    for (double f : filter.m_State)
        EXPECT_EQ(f, 0);
}

TEST(IIRFilter, SectionsOutsideTheRangeOnlyScale)
{
    for (int nForm : {0, 1})
    {
        for (int nSections : {-1, 5, 1000000, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()})
        {
            CIIRFilter filter = MakeFilter(nSections, nForm);
            filter.m_Coef[0] = 2;
            EXPECT_EQ(filter.Filter(21), 42);
        }
    }
}

// y1 = 2x + 3x' + 4x'' - 5y' - 6y'':
//   x = 1:   2
//   x = 10:  20 + 3 - 5 * 2 = 13
//   x = 100: 200 + 30 + 4 - 5 * 13 - 6 * 2 = 157
TEST(IIRFilter, Form0OneSectionByHand)
{
    CIIRFilter filter = MakeFilter(1, 0);
    filter.m_Coef[0] = 99; // not applied
    SetForm0(filter, 0, 2, 3, 4, 5, 6);
    EXPECT_EQ(filter.Filter(1), 2);
    EXPECT_EQ(filter.Filter(10), 13);
    EXPECT_EQ(filter.Filter(100), 157);
    EXPECT_EQ(filter.m_State[0], 100);
    EXPECT_EQ(filter.m_State[1], 10);
    EXPECT_EQ(filter.m_State[2], 157);
    EXPECT_EQ(filter.m_State[3], 13);
    EXPECT_EQ(filter.m_State[4], 0); // the history of a section that is not there
}

// Section 1 only delays by one, section 2 is y = 2x + y':
//   x = 1, 10, 100: after the delay 0, 1, 10, so 0, 2, 22
TEST(IIRFilter, Form0SecondSectionTakesTheFirstOnesOutput)
{
    CIIRFilter filter = MakeFilter(2, 0);
    SetForm0(filter, 0, 0, 1, 0, 0, 0);
    SetForm0(filter, 1, 2, 0, 0, -1, 0);
    EXPECT_EQ(filter.Filter(1), 0);
    EXPECT_EQ(filter.Filter(10), 2);
    EXPECT_EQ(filter.Filter(100), 22);
    EXPECT_EQ(filter.m_State[2], 10);
    EXPECT_EQ(filter.m_State[3], 1);
    EXPECT_EQ(filter.m_State[4], 22);
    EXPECT_EQ(filter.m_State[5], 2);
}

// Four sections that each delay by one: an impulse comes out at the fifth sample.
TEST(IIRFilter, Form0FourSectionsDelayOneAfterTheOther)
{
    CIIRFilter filter = MakeFilter(4, 0);
    for (int k = 0; k < 4; ++k)
        SetForm0(filter, k, 0, 1, 0, 0, 0);
    const double aryExpected[] = {0, 0, 0, 0, 5, 0};
    for (int i = 0; i < 6; ++i)
        EXPECT_EQ(filter.Filter(i == 0 ? 5 : 0), aryExpected[i]) << i;
}

// g = 2x; w = g - 3w' - 4w''; y = w + 5w' + 6w'':
//   x = 1:  w = 2;                y = 2
//   x = 0:  w = -6;               y = -6 + 10 = 4
//   x = 10: w = 20 + 18 - 8 = 30; y = 30 - 30 + 12 = 12
TEST(IIRFilter, Form1OneSectionByHand)
{
    CIIRFilter filter = MakeFilter(1, 1);
    filter.m_Coef[0] = 2;
    SetForm1(filter, 0, 3, 4, 5, 6);
    EXPECT_EQ(filter.Filter(1), 2);
    EXPECT_EQ(filter.Filter(0), 4);
    EXPECT_EQ(filter.Filter(10), 12);
    EXPECT_EQ(filter.m_State[0], 30);
    EXPECT_EQ(filter.m_State[1], -6);
}

// Each section adds its newest inner value once more: y = w + w'. Three of them give the binomial 1, 3, 3, 1.
TEST(IIRFilter, Form1HasThreeSections)
{
    CIIRFilter filter = MakeFilter(3, -1);
    filter.m_Coef[0] = 1;
    for (int k = 0; k < 3; ++k)
        SetForm1(filter, k, 0, 0, 1, 0);
    const double aryExpected[] = {1, 3, 3, 1, 0};
    for (int i = 0; i < 5; ++i)
        EXPECT_EQ(filter.Filter(i == 0 ? 1 : 0), aryExpected[i]) << i;
}

TEST(IIRFilter, FlushLeavesTheLimitAndCutsBelow)
{
    struct ROW
    {
        double fValue;
        double fKept;
    };
    const double fBelow = std::nextafter(1e-150, 0.0);
    const ROW aryRows[] = {{1e-150, 1e-150}, {-1e-150, -1e-150}, {fBelow, 0}, {-fBelow, 0}, {5e-324, 0}, {0, 0}};
    for (const ROW& row : aryRows)
    {
        for (int nForm : {0, 1})
        {
            CIIRFilter filter = MakeFilter(1, nForm);
            filter.m_Coef[0] = 1;
            if (nForm == 0)
                SetForm0(filter, 0, 1, 0, 0, 0, 0);
            (void)filter.Filter(row.fValue);
            const double fState = filter.m_State[nForm == 0 ? 2 : 0];
            EXPECT_EQ(fState, row.fKept);
            EXPECT_EQ(std::signbit(fState), row.fKept < 0) << "exactly 0.0 is positive";
        }
    }
}

TEST(IIRFilter, Form1OutputIsNotFlushed)
{
    CIIRFilter filter = MakeFilter(1, 1);
    filter.m_Coef[0] = 1;
    SetForm1(filter, 0, 0, 0, 1e-100, 0);
    filter.m_State[0] = 1e-100;
    EXPECT_EQ(filter.Filter(0), 1e-100 * 1e-100);
}

TEST(IIRFilter, NotANumberStays)
{
    for (int nForm : {0, 1})
    {
        CIIRFilter filter = MakeFilter(1, nForm);
        filter.m_Coef[0] = 1;
        if (nForm == 0)
            SetForm0(filter, 0, 1, 0, 0, 0, 0);
        EXPECT_TRUE(std::isnan(filter.Filter(std::numeric_limits<double>::quiet_NaN())));
    }
}

TEST(IIRFilter, SilenceEndsInExactZeros)
{
    for (int nForm : {0, 1})
    {
        for (int nSections : {1, 2, 4})
        {
            CIIRFilter filter = MakeFilter(nSections, nForm);
            filter.m_Coef[0] = 1;
            for (int k = 0; k < nSections; ++k)
            {
                if (nForm == 0)
                    SetForm0(filter, k, 1, 0, 0, -0.5, 0);
                else
                    SetForm1(filter, k, -0.5, 0, 0, 0);
            }
            EXPECT_NE(filter.Filter(1), 0);
            for (int i = 0; i < 2000; ++i)
                (void)filter.Filter(0);
            for (double f : filter.m_State)
                EXPECT_TRUE(f == 0 && !std::signbit(f));
        }
    }
}

TEST(IIRFilter, EqualsTheModelInEverySizeAndForm)
{
    std::mt19937_64 random(7);
    std::uniform_real_distribution<double> any(-1, 1);
    for (int nRound = 0; nRound < 400; ++nRound)
    {
        CIIRFilter filter = MakeFilter(nRound % 5, nRound / 5 % 2);
        for (double& f : filter.m_Coef)
            f = any(random);
        for (double& f : filter.m_State)
            f = any(random);
        Model model(filter);
        for (int i = 0; i < 50; ++i)
        {
            const double x = i % 7 == 0 ? 0 : any(random) * std::pow(10, any(random) * 200);
            const double fExpected = model.Step(x);
            const double fOutput = filter.Filter(x);
            ASSERT_EQ(memcmp(&fExpected, &fOutput, sizeof fOutput), 0) << nRound << ' ' << i;
            // The model keeps no history that its size does not use, and neither does the filter.
            ASSERT_EQ(memcmp(model.s, filter.m_State, sizeof model.s), 0) << nRound << ' ' << i;
        }
    }
}
