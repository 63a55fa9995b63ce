// The entry point the host looks up, and LV2's C callbacks over VocatoPlugin.
#include "PluginPorts.h"
#include "VocatoPlugin.h"

#include <lv2/core/lv2.h>
#include <lv2/worker/worker.h>

#include <cstring>
#include <exception>

namespace {

using vocato::lv2::VocatoPlugin;

VocatoPlugin* Self(LV2_Handle handle) {
    return static_cast<VocatoPlugin*>(handle);
}

LV2_Handle Instantiate(const LV2_Descriptor*, double rate, const char*,
                       const LV2_Feature* const* features) {
    return VocatoPlugin::Create(rate, features).release();
}

void ConnectPort(LV2_Handle handle, uint32_t port, void* data) {
    Self(handle)->ConnectPort(port, data);
}

void Activate(LV2_Handle handle) {
    Self(handle)->Activate();
}

void Run(LV2_Handle handle, uint32_t frames) {
    Self(handle)->Run(frames);
}

void Deactivate(LV2_Handle handle) {
    Self(handle)->Deactivate();
}

void Cleanup(LV2_Handle handle) {
    delete Self(handle);
}

LV2_Worker_Status Work(LV2_Handle handle, LV2_Worker_Respond_Function, LV2_Worker_Respond_Handle,
                       uint32_t, const void*) {
    try {
        Self(handle)->Work();
    } catch (const std::exception&) {
        return LV2_WORKER_ERR_UNKNOWN; // no memory for a spare: the next preset change asks again
    }
    return LV2_WORKER_SUCCESS;
}

LV2_Worker_Status WorkResponse(LV2_Handle, uint32_t, const void*) {
    return LV2_WORKER_SUCCESS;
}

const LV2_Worker_Interface kWorker = {Work, WorkResponse, nullptr};

const void* ExtensionData(const char* uri) {
    return std::strcmp(uri, LV2_WORKER__interface) == 0 ? &kWorker : nullptr;
}

const LV2_Descriptor kDescriptor = {
    vocato::lv2::kPluginUri, Instantiate, ConnectPort, Activate, Run, Deactivate, Cleanup,
    ExtensionData,
};

} // namespace

LV2_SYMBOL_EXPORT const LV2_Descriptor* lv2_descriptor(uint32_t index) {
    return index == 0 ? &kDescriptor : nullptr;
}
