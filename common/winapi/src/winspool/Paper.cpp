#include "winspool/Paper.h"

#include <algorithm>
#include <cstdlib>
#include <string_view>

#include "winspool/CupsBinding.h"

namespace winapi {
namespace {

struct NumberedPaper {
  int number;
  const char* name;
};
// Of several numbers for one size the first is told; those for a paper on its side aren't here.
constexpr NumberedPaper kNumbers[] = {
    {1, "na_letter_8.5x11in"},
    {3, "na_ledger_11x17in"},
    {5, "na_legal_8.5x14in"},
    {6, "na_invoice_5.5x8.5in"},
    {7, "na_executive_7.25x10.5in"},
    {8, "iso_a3_297x420mm"},
    {9, "iso_a4_210x297mm"},
    {11, "iso_a5_148x210mm"},
    {12, "jis_b4_257x364mm"},
    {13, "jis_b5_182x257mm"},
    {14, "na_foolscap_8.5x13in"},
    {15, "na_quarto_8.5x10.83in"},
    {16, "na_10x14_10x14in"},
    {17, "na_ledger_11x17in"},
    {19, "na_number-9_3.875x8.875in"},
    {20, "na_number-10_4.125x9.5in"},
    {21, "na_number-11_4.5x10.375in"},
    {22, "na_number-12_4.75x11in"},
    {23, "na_number-14_5x11.5in"},
    {24, "na_c_17x22in"},
    {25, "na_d_22x34in"},
    {26, "na_e_34x44in"},
    {27, "iso_dl_110x220mm"},
    {28, "iso_c5_162x229mm"},
    {29, "iso_c3_324x458mm"},
    {30, "iso_c4_229x324mm"},
    {31, "iso_c6_114x162mm"},
    {32, "iso_c6c5_114x229mm"},
    {33, "iso_b4_250x353mm"},
    {34, "iso_b5_176x250mm"},
    {36, "om_italian_110x230mm"},
    {37, "na_monarch_3.875x7.5in"},
    {38, "na_personal_3.625x6.5in"},
    {40, "na_fanfold-eur_8.5x12in"},
    {42, "iso_b4_250x353mm"},
    {43, "jpn_hagaki_100x148mm"},
    {44, "na_9x11_9x11in"},
    {45, "na_10x11_10x11in"},
    {47, "om_invite_220x220mm"},
    {50, "na_letter-extra_9.5x12in"},
    {51, "na_legal-extra_9.5x15in"},
    {53, "iso_a4-extra_235.5x322.3mm"},
    {59, "na_letter-plus_8.5x12.69in"},
    {60, "om_folio_210x330mm"},
    {63, "iso_a3-extra_322x445mm"},
    {64, "iso_a5-extra_174x235mm"},
    {65, "iso_b5-extra_201x276mm"},
    {66, "iso_a2_420x594mm"},
    {70, "iso_a6_105x148mm"},
    {71, "jpn_kaku2_240x332mm"},
    {88, "jis_b6_128x182mm"},
    {93, "prc_16k_146x215mm"},
    {94, "prc_32k_97x151mm"},
    {96, "prc_1_102x165mm"},
    {97, "prc_2_102x176mm"},
    {99, "prc_4_110x208mm"},
    {101, "prc_6_120x230mm"},
    {102, "prc_7_160x230mm"},
    {103, "prc_8_120x309mm"},
};

// A PPD has whole points, which are 35 hundredths of a millimetre.
constexpr int kTolerance = 40;

bool IsNear(int one, int other) {
  return std::abs(one - other) <= kTolerance;
}

bool HasSize(const Paper& paper, int width, int length) {
  return IsNear(paper.width, width) && IsNear(paper.length, length);
}

}  // namespace

Paper PaperOfName(const std::string& name) {
  const CupsCalls* const cups = Cups();
  if (cups == nullptr || name.empty()) return {};
  const pwg_media_t* media = nullptr;
  for (const auto find : {cups->pwgMediaForPWG, cups->pwgMediaForLegacy, cups->pwgMediaForPPD}) {
    if (media == nullptr) media = find(name.c_str());
  }
  if (media == nullptr) return {};
  return {media->pwg == nullptr ? name : media->pwg, media->width, media->length};
}

Paper PaperOfNumber(int number) {
  for (const NumberedPaper& paper : kNumbers) {
    if (paper.number == number) return PaperOfName(paper.name);
  }
  return {};
}

int NumberOf(const Paper& paper) {
  for (const NumberedPaper& numbered : kNumbers) {
    const Paper candidate = PaperOfName(numbered.name);
    if (HasSize(candidate, paper.width, paper.length)) return numbered.number;
  }
  return 0;
}

PaperList::PaperList(const std::vector<std::string>& names) {
  for (const std::string& name : names) {
    Paper paper = PaperOfName(name);
    if (paper.width <= 0 || paper.length <= 0) continue;
    if (name.starts_with("custom_min")) {
      m_smallest = std::move(paper);
    } else if (name.starts_with("custom_max")) {
      m_largest = std::move(paper);
    } else {
      paper.name = name;
      m_papers.push_back(std::move(paper));
    }
  }
}

bool PaperList::Find(int width, int length, Paper& paper) const {
  if (width <= 0 || length <= 0) return false;
  return FindUpright(width, length, paper) || FindUpright(length, width, paper);
}

bool PaperList::FindUpright(int width, int length, Paper& paper) const {
  const auto found = std::find_if(m_papers.begin(), m_papers.end(), [&](const Paper& candidate) {
    return HasSize(candidate, width, length);
  });
  if (found != m_papers.end()) {
    paper = *found;
    return true;
  }
  if (width < m_smallest.width || length < m_smallest.length || width > m_largest.width ||
      length > m_largest.length) {
    return false;
  }
  char name[128];
  if (!Cups()->pwgFormatSizeName(name, sizeof name, "custom", nullptr, width, length, "mm")) {
    return false;
  }
  paper = {name, width, length};
  return true;
}

}  // namespace winapi
