// Member lists of the SDK's records, for code that handles their members one by one: the bridge's
// conversions, the stand-in's record copies and the benchmark's frames use these instead of
// writing the members out again.
#pragma once

// The quality record's grades and scores in layout order: GRADE(member) for an int, SCORE(member)
// for a float. The first ten grades and eight scores are the ones a waybill request sends.
#define QUORIN_QUALITY_MEMBERS(GRADE, SCORE)                                                       \
  GRADE(nOverQuality) GRADE(nDeCode) GRADE(nSCGrade) GRADE(nModGrade) GRADE(nFPDGrade)             \
  GRADE(nANGrade) GRADE(nGNGrade) GRADE(nUECGrade) GRADE(nPGHGrade) GRADE(nPGVGrade)               \
  SCORE(fSCScore) SCORE(fModScore) SCORE(fFPDScore) SCORE(fAnScore) SCORE(fGNScore)                \
  SCORE(fUECScore) SCORE(fPGHScore) SCORE(fPGVScore)                                               \
  GRADE(nRMGrade) SCORE(fRMScore)                                                                  \
  GRADE(n1DEdgeGrade) GRADE(n1DMinRGrade) GRADE(n1DMinEGrade) GRADE(n1DDcdGrade) GRADE(n1DDefGrade) \
  GRADE(n1DQZGrade)                                                                                \
  SCORE(f1DEdgeScore) SCORE(f1DMinRScore) SCORE(f1DMinEScore) SCORE(f1DDcdScore) SCORE(f1DDefScore) \
  SCORE(f1DQZScore)

// The members a decoded code carries alike in its extended (QUORIN_BCR_INFO_EX), plain
// (QUORIN_BCR_INFO) and legacy (QUORIN_BcrInfo) records, apart from its text and corners.
#define QUORIN_CODE_SHARED_MEMBERS(MEMBER)                                                         \
  MEMBER(nAngle) MEMBER(nMainPackageId) MEMBER(nSubPackageId) MEMBER(sAppearCount) MEMBER(sPPM)     \
  MEMBER(sAlgoCost) MEMBER(sSharpness)
