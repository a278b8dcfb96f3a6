// CConvertToFloatFilter: a conversion of samples to doubles, bound at run time to the form that the samples have.
//
// Shape:   source and destination run in parallel, sample by sample; interleaving is the caller's affair.
// Units:   samples (not frames). Full scale is 1.0; a 16-bit sample is divided by 32768, which is exact.
// Errors:  what is not bound converts everything to silence, and says so by false.
// Owner:   the object bound to must outlive the filter; the conversions of CSampleConverter are bound to a static one.
// Threads: a conversion changes nothing here; several may run at once.

#pragma once

// The conversions there are. No state: one object serves all.
class CSampleConverter
{
public:
    void Convert16Bit(const void* pSource, double* pDestination, int nSamples) const;
};

class CConvertToFloatFilter
{
public:
    using CONVERSION = void (CSampleConverter::*)(const void* pSource, double* pDestination, int nSamples) const;

    void Bind(const CSampleConverter* pObject, CONVERSION pFunction);
    void BindTo16Bit(); // signed, in the byte order of this machine
    bool IsBound() const { return m_pObject != nullptr && m_pFunction != nullptr; }

    // A count below 1 or a missing end of the work does nothing. False if nothing is bound.
    bool operator()(const void* pSource, double* pDestination, int nSamples) const;

    CONVERSION m_pFunction = nullptr;
    const CSampleConverter* m_pObject = nullptr;
    long long m_nReserved = 0;
};
