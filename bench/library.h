// The built library, loaded as an application does that decides at run time, and the bare calls that it is measured against.
#pragma once

#include <dlfcn.h>

#include <memory>
#include <stdexcept>
#include <string>

#include "transport/callbacks.h"
#include "vaskdfc.h"

namespace bench {

class SharedObject {
 public:
  explicit SharedObject(const std::string& path) : object_(dlopen(path.c_str(), RTLD_NOW)) {
    if (object_ == nullptr) throw std::runtime_error(dlerror());
  }
  ~SharedObject() { dlclose(object_); }
  SharedObject(const SharedObject&) = delete;
  SharedObject& operator=(const SharedObject&) = delete;

  template <typename Function>
  Function* function(const char* name) const {
    void* const address = dlsym(object_, name);
    if (address == nullptr) throw std::runtime_error(dlerror());
    return reinterpret_cast<Function*>(address);
  }

 private:
  void* object_;
};

// The operations that are measured.
struct Library {
  explicit Library(const std::string& path) : object(path) {}

  SharedObject object;

#define BENCH_OPERATION(name) decltype(::name)* const name = object.function<decltype(::name)>(#name)
  BENCH_OPERATION(DFC_InitDiagEnv);
  BENCH_OPERATION(DFC_FreeDiagEnv);
  BENCH_OPERATION(DFC_NPIVReadyTest);
  BENCH_OPERATION(GetIOinfo);
  BENCH_OPERATION(DFC_GetLinkInfo);
  BENCH_OPERATION(GetAdapterPortAttributes);
  BENCH_OPERATION(SendScsiInquiry);
  BENCH_OPERATION(SendScsiRead);
  BENCH_OPERATION(SendScsiWrite);
  BENCH_OPERATION(GetCTInfo);
  BENCH_OPERATION(DFC_RunLoopbackTest);
  BENCH_OPERATION(DFC_QoSSetConfig);
  BENCH_OPERATION(GetFcpTargetMapping);
  BENCH_OPERATION(DFC_GetFcpTargetMappingV2);
#undef BENCH_OPERATION
};

// The platform's call as an application would make it that had no library: parameters after a zeroed header.
template <typename... Parameters>
int bare_call(vaskdfc::Callback callback, dfc_mgmt_hdr& header, Parameters*... parameters) {
  constexpr std::uint32_t kCount = 1 + sizeof...(parameters);
  return vmk_MgmtUserCallbackInvokeInt(nullptr, 0, static_cast<std::uint64_t>(callback), kCount, &header, parameters...);
}

}  // namespace bench
