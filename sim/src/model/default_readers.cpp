// The readers a fresh stand-in reports: a small sorting line with one reader of each kind.
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "QuorinSim.h"
#include "model/reader_traits.h"

namespace qsim {
namespace {

constexpr const char* kModel2D = "QR-2020-2D";
constexpr const char* kModelMultiChannel = "QR-4040-MC";
constexpr const char* kModelWaybill = "QR-WB-800";
constexpr unsigned int kMultiChannelCount = 4;

// SDK address word: first octet in the most significant byte.
constexpr unsigned int Address(unsigned int a, unsigned int b, unsigned int c, unsigned int d) {
  return a << 24 | b << 16 | c << 8 | d;
}

constexpr unsigned int kAllIpConfigs = QUORIN_IP_CFG_STATIC | QUORIN_IP_CFG_DHCP | QUORIN_IP_CFG_LLA;

struct ReaderProfile {
  unsigned short protocolMajor;
  unsigned short protocolMinor;
  unsigned int macHigh;  // first two octets of the MAC
  unsigned int macLow;   // last four
  bool codeReader;
  unsigned int ipConfig;
  unsigned int ip;
  unsigned int mask;
  unsigned int gateway;
  unsigned int hostInterface;
  unsigned int heldBy;  // host that holds the reader, 0 when free
  const char* model;
  const char* version;
  const char* makerInfo;
  const char* serial;
  const char* userName;  // as the device stores it, GBK for Chinese names
};

// A default text that does not fit its array is a mistake in this file, not a runtime case.
template <size_t N>
void CopyText(char (&field)[N], const char* text) {
  if (std::strlen(text) >= N) {
    std::fprintf(stderr, "qsim: default reader text \"%s\" exceeds %zu bytes\n", text, N - 1);
    std::abort();
  }
  std::strcpy(field, text);
}

QUORIN_DEVICE_INFO MakeReader(const ReaderProfile& profile) {
  QUORIN_DEVICE_INFO info;
  std::memset(&info, 0, sizeof info);
  info.nMajorVer = profile.protocolMajor;
  info.nMinorVer = profile.protocolMinor;
  info.nMacAddrHigh = profile.macHigh;
  info.nMacAddrLow = profile.macLow;
  info.nTLayerType = QUORIN_GIGE_DEVICE;
  info.bCodeReader = profile.codeReader ? 1 : 0;

  QUORIN_GIGE_DEVICE_INFO& gige = info.stGigEInfo;
  gige.nIpCfgOption = kAllIpConfigs;
  gige.nIpCfgCurrent = profile.ipConfig;
  gige.nCurrentIp = profile.ip;
  gige.nCurrentSubNetMask = profile.mask;
  gige.nDefultGateWay = profile.gateway;
  gige.nNetExport = profile.hostInterface;
  gige.nCurUserIP = profile.heldBy;
  CopyText(gige.chManufacturerName, "Quorin Vision");
  CopyText(gige.chModelName, profile.model);
  CopyText(gige.chDeviceVersion, profile.version);
  CopyText(gige.chManufacturerSpecificInfo, profile.makerInfo);
  CopyText(gige.chSerialNumber, profile.serial);
  CopyText(gige.chUserDefinedName, profile.userName);
  return info;
}

const ReaderProfile kDefaultReaders[] = {
    {1, 2, 0x34BD, 0x20140117, true, QUORIN_IP_CFG_STATIC, Address(192, 168, 1, 20),
     Address(255, 255, 255, 0), Address(192, 168, 1, 1), Address(192, 168, 1, 100), 0,
     kModel2D, "V3.2.1 build240516", "2D code reader, 5 MP", "QN2405C0117",
     "\xB7\xD6\xBC\xF0\xCF\xDF\xD2\xBB"},  // 分拣线一 in GBK
    {2, 0, 0x34BD, 0x20140042, true, QUORIN_IP_CFG_DHCP, Address(192, 168, 1, 21),
     Address(255, 255, 255, 0), Address(192, 168, 1, 1), Address(192, 168, 1, 100), 0,
     kModelMultiChannel, "V4.0.3 build240302", "Multi-channel reader, 4 channels", "QN2403M0042",
     "Tunnel-4ch"},
    {2, 0, 0x34BD, 0x20130008, true, QUORIN_IP_CFG_STATIC, Address(192, 168, 2, 30),
     Address(255, 255, 255, 0), Address(192, 168, 2, 1), Address(192, 168, 2, 100),
     Address(192, 168, 2, 77), kModelWaybill, "V2.8.0 build231120", "Waybill cutting reader",
     "QN2311W0008", "Waybill-West"},
    {1, 1, 0x34BD, 0x20180230, false, QUORIN_IP_CFG_LLA, Address(169, 254, 12, 50),
     Address(255, 255, 0, 0), Address(0, 0, 0, 0), Address(169, 254, 12, 10), 0, "QR-AC-500",
     "V1.4.7 build240821", "Area camera, no decoder", "QN2408A0230", "Overview-Cam"},
};

}  // namespace

ReaderTraits TraitsOf(const QUORIN_DEVICE_INFO& info) {
  const char* model = info.stGigEInfo.chModelName;
  const auto is = [&](const char* name) {
    return std::strncmp(model, name, sizeof info.stGigEInfo.chModelName) == 0;
  };
  ReaderTraits traits;
  traits.channelCount = is(kModelMultiChannel) ? kMultiChannelCount : 1;
  traits.decodes = info.bCodeReader != 0;
  traits.cutsWaybills = is(kModelWaybill);
  traits.gbkCodeTexts = is(kModel2D);
  return traits;
}

std::vector<QUORIN_DEVICE_INFO> DefaultReaders() {
  std::vector<QUORIN_DEVICE_INFO> readers;
  for (const ReaderProfile& profile : kDefaultReaders) {
    readers.push_back(MakeReader(profile));
  }
  return readers;
}

}  // namespace qsim
