#include "Korvex3Sync/Images.h"

#include "interface/CallFrame.h"

namespace Korvex3Sync {

RETSTATUS SetScanCallBackFunction(void* const& handle, ScanCallBackFunction callback,
                                  void* context) {
    return ExportCall(Variant::Standard, "SetScanCallBackFunction", handle,
                      &IManagerSync::SetScanCallBackFunction, callback, context);
}

RETSTATUS SetStatusCallBackFunction(void* const& handle, StatusCallBackFunction callback,
                                    void* context) {
    return ExportCall(Variant::Standard, "SetStatusCallBackFunction", handle,
                      &IManagerSync::SetStatusCallBackFunction, callback, context);
}

RETSTATUS SnapColorImage(void* const& handle, std::vector<unsigned char*>&, int&, int&, const int&,
                         double&, int&, const CONTROLROUTE&) {
    return ExportCall(Variant::Standard, "SnapColorImage", handle, NotInThisVersion);
}

RETSTATUS SnapColorImageForIR(void* const& handle, std::vector<unsigned char*>&, int&, int&,
                              const int&, std::vector<double>&, std::vector<int>&,
                              const CONTROLROUTE&) {
    return ExportCall(Variant::AlwaysDirect, "SnapColorImageForIR", handle, NotInThisVersion);
}

}  // namespace Korvex3Sync
