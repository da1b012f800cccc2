/**
 * @file
 * @brief Cross-section dimensions and profile code of a steel profile.
 */
#ifndef QEL_PROF_TYPE_DSTV_VALUES_H
#define QEL_PROF_TYPE_DSTV_VALUES_H

#include "qelExport.h"
#include "qelString.h"

/**
 * @brief Profile types and the profile code of each.
 * @ingroup numerics
 */
enum eDSTVType : int
{
    eDSTV_None = -1, ///< "SO"
    eDSTV_I = 0,     ///< "I"
    eDSTV_L = 1,     ///< "L"
    eDSTV_U = 2,     ///< "U"
    eDSTV_B = 3,     ///< "B"
    eDSTV_RU = 4,    ///< "RU"
    eDSTV_RO = 5,    ///< "RO"
    eDSTV_M = 6,     ///< "M"
    eDSTV_C = 7,     ///< "C"
    eDSTV_T = 8,     ///< "T"
    eDSTV_Z = 9,     ///< "Z"
    eDSTV_KA = 10,   ///< "KA"
    eDSTV_KF = 11,   ///< "KF"
    eDSTV_KQ = 12,   ///< "KQ"
    eDSTV_CCS = 13,  ///< "CCS"
    eDSTV_PL1 = 14,  ///< "PL1"
    eDSTV_PL2 = 15,  ///< "PL2"
    eDSTV_SO = 16,   ///< "SO"
    eDSTV_CSE = 17,  ///< "CSE"
};

/**
 * @brief Cross-section dimensions and profile code of a steel profile.
 * @ingroup numerics
 *
 * A plain value. Dimensions have the parameter names of the DSTV standard for steel-construction data exchange, in
 * whatever units the model uses; the class neither converts nor checks them.
 *
 * @par Example
 * @code
 * qelProfTypeDSTVValues profile;
 * profile.setDSTVType(eDSTV_I);
 * profile.setH1(190.0);
 * profile.getH1();             // == 190.0
 * profile.getB1();             // == 0.0
 * profile.getProftypeString(); // == L"I"
 * @endcode
 */
class QEL_API qelProfTypeDSTVValues
{
public:
    /// Every dimension is 0. The type is deliberately left uninitialised: set it before you read it.
    qelProfTypeDSTVValues();

    /// The type set last.
    eDSTVType getDSTVType() const { return m_DSTVType; }

    /// Sets the type; not checked.
    void setDSTVType(const eDSTVType& type) { m_DSTVType = type; }

    /// The profile code of the type; "SO" for a type that has none.
    qelString getProftypeString() const;

    /// @name Dimensions by the standard's parameter name
    /// @{
    double getH1() const { return m_H1; }             ///< H1
    void setH1(const double& value) { m_H1 = value; } ///< sets H1
    double getH2() const { return m_H2; }             ///< H2
    void setH2(const double& value) { m_H2 = value; } ///< sets H2
    double getH3() const { return m_H3; }             ///< H3
    void setH3(const double& value) { m_H3 = value; } ///< sets H3

    double getB1() const { return m_B1; }             ///< B1
    void setB1(const double& value) { m_B1 = value; } ///< sets B1
    double getB2() const { return m_B2; }             ///< B2
    void setB2(const double& value) { m_B2 = value; } ///< sets B2
    double getB3() const { return m_B3; }             ///< B3
    void setB3(const double& value) { m_B3 = value; } ///< sets B3

    double getTS() const { return m_TS; }             ///< TS
    void setTS(const double& value) { m_TS = value; } ///< sets TS
    double getTG() const { return m_TG; }             ///< TG
    void setTG(const double& value) { m_TG = value; } ///< sets TG
    double getT1() const { return m_T1; }             ///< T1
    void setT1(const double& value) { m_T1 = value; } ///< sets T1

    double getC() const { return m_C; }             ///< C
    void setC(const double& value) { m_C = value; } ///< sets C

    double getR1() const { return m_R1; }             ///< R1
    void setR1(const double& value) { m_R1 = value; } ///< sets R1
    double getR2() const { return m_R2; }             ///< R2
    void setR2(const double& value) { m_R2 = value; } ///< sets R2
    double getR3() const { return m_R3; }             ///< R3
    void setR3(const double& value) { m_R3 = value; } ///< sets R3

    double getK() const { return m_K; }             ///< K
    void setK(const double& value) { m_K = value; } ///< sets K

    double getF1() const { return m_F1; }             ///< F1
    void setF1(const double& value) { m_F1 = value; } ///< sets F1
    double getF2() const { return m_F2; }             ///< F2
    void setF2(const double& value) { m_F2 = value; } ///< sets F2
    double getF3() const { return m_F3; }             ///< F3
    void setF3(const double& value) { m_F3 = value; } ///< sets F3

    double getALPHA_S() const { return m_ALPHA_S; }             ///< ALPHA_S
    void setALPHA_S(const double& value) { m_ALPHA_S = value; } ///< sets ALPHA_S
    double getALPHA_G() const { return m_ALPHA_G; }             ///< ALPHA_G
    void setALPHA_G(const double& value) { m_ALPHA_G = value; } ///< sets ALPHA_G

    double getEY() const { return m_EY; }             ///< EY
    void setEY(const double& value) { m_EY = value; } ///< sets EY
    double getEZ() const { return m_EZ; }             ///< EZ
    void setEZ(const double& value) { m_EZ = value; } ///< sets EZ

    double getW1() const { return m_W1; }             ///< W1
    void setW1(const double& value) { m_W1 = value; } ///< sets W1
    double getW2() const { return m_W2; }             ///< W2
    void setW2(const double& value) { m_W2 = value; } ///< sets W2
    double getW3() const { return m_W3; }             ///< W3
    void setW3(const double& value) { m_W3 = value; } ///< sets W3

    double getA() const { return m_A; }             ///< A
    void setA(const double& value) { m_A = value; } ///< sets A

    double getG() const { return m_G; }             ///< G
    void setG(const double& value) { m_G = value; } ///< sets G

    double getGH() const { return m_GH; }             ///< GH
    void setGH(const double& value) { m_GH = value; } ///< sets GH

    double getU() const { return m_U; }             ///< U
    void setU(const double& value) { m_U = value; } ///< sets U
    /// @}

private:
    eDSTVType m_DSTVType;
    double m_H1;
    double m_H2;
    double m_H3;
    double m_B1;
    double m_B2;
    double m_B3;
    double m_TS;
    double m_TG;
    double m_T1;
    double m_C;
    double m_R1;
    double m_R2;
    double m_R3;
    double m_K;
    double m_F1;
    double m_F2;
    double m_F3;
    double m_ALPHA_S;
    double m_ALPHA_G;
    double m_EY;
    double m_EZ;
    [[maybe_unused]] double m_reserved; ///< unused; kept for the layout
    double m_W1;
    double m_W2;
    double m_W3;
    double m_A;
    double m_G;
    double m_GH;
    double m_U;
};

static_assert(sizeof(qelProfTypeDSTVValues) == 240, "a type and 29 values");

#endif
