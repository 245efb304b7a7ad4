#pragma once

#include <utility>

#include "RuntimeError.h"

namespace rt {

// "On Error Resume Next": each statement runs on its own; a run-time error it raises is noted
// and the next statement follows. Only run-time errors are skipped; the End statement is not.
class ResumeNext {
public:
    template <class Statement>
    void operator()(Statement &&statement)
    {
        try {
            std::forward<Statement>(statement)();
        } catch (const RuntimeError &e) {
            m_lastError = e.number();
        }
    }

    // An If under this rule: a condition that raises counts as met, so the body runs.
    template <class Condition, class Body>
    void If(Condition &&condition, Body &&body)
    {
        bool met = true;
        try {
            met = std::forward<Condition>(condition)();
        } catch (const RuntimeError &e) {
            m_lastError = e.number();
        }
        if (met)
            std::forward<Body>(body)();
    }

    // If/Else under this rule: a condition that raises takes the first branch.
    template <class Condition, class Then, class Else>
    void IfElse(Condition &&condition, Then &&thenBody, Else &&elseBody)
    {
        bool met = true;
        try {
            met = std::forward<Condition>(condition)();
        } catch (const RuntimeError &e) {
            m_lastError = e.number();
        }
        if (met)
            std::forward<Then>(thenBody)();
        else
            std::forward<Else>(elseBody)();
    }

    // Err.Number of the last skipped error, 0 when none.
    int lastError() const { return m_lastError; }
    void clearError() { m_lastError = 0; }

private:
    int m_lastError = 0;
};

} // namespace rt
