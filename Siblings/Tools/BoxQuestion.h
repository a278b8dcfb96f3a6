// What a message box asks, how it is asked on a terminal, and how it is told where there is none.

#pragma once

#include <string>
#include <vector>

class BoxQuestion
{
public:
    // Waits for an answer on the terminal. The number of the button, counted from 1; the default button's for Enter
    // alone, at the end of the input, and when a signal interrupts.
    int Ask() const;
    void Print() const; // one line on the standard error stream: "caption: text"

    // The button that a typed line means: 0 for none. Its number, its text, or the beginning of only one text, in
    // either case of letters; an empty line is the default button.
    int FindButton(std::wstring strLine) const;
    bool IsButton(long nButton) const { return nButton >= 1 && nButton <= static_cast<long>(m_aryButtons.size()); }

    std::wstring m_strCaption;
    std::wstring m_strText;
    std::vector<std::wstring> m_aryButtons;
    int m_nDefault = 1;

private:
    std::string BuildQuestion() const;
    std::string BuildPrompt() const;
};
