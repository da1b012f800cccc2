#include "qelProfTypeDSTVValues.h"

// Deliberate: the type has no initial value.
qelProfTypeDSTVValues::qelProfTypeDSTVValues()
    : m_H1(0.0)
    , m_H2(0.0)
    , m_H3(0.0)
    , m_B1(0.0)
    , m_B2(0.0)
    , m_B3(0.0)
    , m_TS(0.0)
    , m_TG(0.0)
    , m_T1(0.0)
    , m_C(0.0)
    , m_R1(0.0)
    , m_R2(0.0)
    , m_R3(0.0)
    , m_K(0.0)
    , m_F1(0.0)
    , m_F2(0.0)
    , m_F3(0.0)
    , m_ALPHA_S(0.0)
    , m_ALPHA_G(0.0)
    , m_EY(0.0)
    , m_EZ(0.0)
    , m_reserved(0.0)
    , m_W1(0.0)
    , m_W2(0.0)
    , m_W3(0.0)
    , m_A(0.0)
    , m_G(0.0)
    , m_GH(0.0)
    , m_U(0.0)
{
}

qelString qelProfTypeDSTVValues::getProftypeString() const
{
    static const wchar_t* const codes[] = {L"SO", L"I",  L"L",  L"U",  L"B",   L"RU",  L"RO",  L"M",  L"C",  L"T",
                                           L"Z",  L"KA", L"KF", L"KQ", L"CCS", L"PL1", L"PL2", L"SO", L"CSE"};
    const bool known = m_DSTVType >= eDSTV_None && m_DSTVType <= eDSTV_CSE;
    return codes[known ? m_DSTVType - eDSTV_None : 0];
}
