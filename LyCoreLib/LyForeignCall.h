// Calls into code of other libraries, which may throw what it likes.

#pragma once

// Runs the call; false if it threw. Nothing is known of what was thrown, so nothing is done with it.
template <class CALL>
bool LyForeignCall(CALL call) noexcept
{
    try
    {
        call();
        return true;
    }
    catch (...)
    {
        return false;
    }
}
