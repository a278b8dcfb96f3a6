// The description of the product that this library belongs to. There is one product, and its description is built in.
//
// Threads: any.

#pragma once

#include "IProductInfo.h"
#include <atomic>

class ProductInfo final : public IProductInfo
{
public:
    static const wchar_t* const NAME;
    static const wchar_t* const VERSION;

    bool GetHasProduct() override { return m_bLoaded.load(std::memory_order_acquire); }
    // True for the empty name and for NAME, whatever its case; any other product is unknown, and changes nothing. The
    // other arguments say nothing to this product.
    bool Load(const wchar_t* pName, bool bFirst, bool bSecond, const wchar_t* pText, int nNumber) override;
    // The user's folder for this product's data, with a slash at the end, whether it is there or not; empty if the
    // user has none. It does not depend on Load, since there is but one product to ask for.
    LyXString GetAppdataDirectory() override;

private:
    std::atomic<bool> m_bLoaded{false};
};
