#include "oci/Shapes.h"

#include <algorithm>

namespace ocwemu {

const std::vector<ShapeInfo>& Shapes() {
    static const std::vector<ShapeInfo> kShapes = [] {
        std::vector<ShapeInfo> v;
        const char* intel = "2.0 GHz Intel Xeon Platinum 8167M (Skylake)";
        v.push_back({"VM.Standard2.1", 1, 15, 1, 2, false, intel});
        v.push_back({"VM.Standard2.2", 2, 30, 2, 2, false, intel});
        v.push_back({"VM.Standard2.4", 4, 60, 4.1, 4, false, intel});
        v.push_back({"VM.Standard2.8", 8, 120, 8.2, 8, false, intel});
        v.push_back({"VM.Standard.E2.1.Micro", 1, 1, 0.48, 1, false, "2.0 GHz AMD EPYC 7551 (Naples)"});
        v.push_back({"BM.Standard2.52", 52, 768, 50, 52, false, intel});
        ShapeInfo e4{"VM.Standard.E4.Flex", 1, 16, 1, 2, true, "2.55 GHz AMD EPYC 7J13 (Milan)"};
        e4.minOcpus = 1;
        e4.maxOcpus = 64;
        e4.memPerOcpuMin = 1;
        e4.memPerOcpuMax = 64;
        e4.memPerOcpuDefault = 16;
        e4.minMemory = 1;
        e4.maxMemory = 1024;
        v.push_back(e4);
        ShapeInfo s3{"VM.Standard3.Flex", 1, 16, 1, 2, true, "2.0 GHz Intel Xeon Platinum 8358 (Ice Lake)"};
        s3.minOcpus = 1;
        s3.maxOcpus = 32;
        s3.memPerOcpuMin = 1;
        s3.memPerOcpuMax = 64;
        s3.memPerOcpuDefault = 16;
        s3.minMemory = 1;
        s3.maxMemory = 512;
        v.push_back(s3);
        return v;
    }();
    return kShapes;
}

const ShapeInfo* FindShape(const std::string& name) {
    for (const auto& s : Shapes())
        if (s.name == name) return &s;
    return nullptr;
}

JObject ShapeJson(const ShapeInfo& s) {
    JObject o{{"shape", s.name},
              {"processorDescription", s.processor},
              {"ocpus", s.ocpus},
              {"memoryInGBs", s.memoryInGBs},
              {"networkingBandwidthInGbps", s.bandwidthGbps},
              {"maxVnicAttachments", s.maxVnics},
              {"gpus", 0},
              {"localDisks", 0},
              {"isFlexible", s.flexible},
              {"isLiveMigrationSupported", true},
              {"billingType", s.name == "VM.Standard.E2.1.Micro" ? "ALWAYS_FREE" : "PAID"},
              {"quotaNames", JArray{}},
              {"platformNames", JArray{}},
              {"baselineOcpuUtilizations", JArray{}}};
    if (s.flexible) {
        o["ocpuOptions"] = JObject{{"min", s.minOcpus}, {"max", s.maxOcpus}, {"maxPerNumaNode", s.maxOcpus}};
        o["memoryOptions"] = JObject{{"minInGBs", s.minMemory},
                                     {"maxInGBs", s.maxMemory},
                                     {"defaultPerOcpuInGBs", s.memPerOcpuDefault},
                                     {"minPerOcpuInGBs", s.memPerOcpuMin},
                                     {"maxPerOcpuInGBs", s.memPerOcpuMax},
                                     {"maxPerNumaNodeInGBs", s.maxMemory}};
        o["networkingBandwidthOptions"] =
            JObject{{"minInGbps", 1}, {"maxInGbps", 40}, {"defaultPerOcpuInGbps", 1}};
        o["maxVnicAttachmentOptions"] = JObject{{"min", 2}, {"max", 24}, {"defaultPerOcpu", 1}};
    }
    return o;
}

JObject InstanceShapeConfig(const ShapeInfo& s, double ocpus, double memoryInGBs) {
    return JObject{{"ocpus", ocpus},
                   {"memoryInGBs", memoryInGBs},
                   {"vcpus", static_cast<int>(ocpus * 2)},
                   {"processorDescription", s.processor},
                   {"networkingBandwidthInGbps", s.flexible ? ocpus : s.bandwidthGbps},
                   {"maxVnicAttachments", s.flexible ? std::max(2, static_cast<int>(ocpus)) : s.maxVnics},
                   {"gpus", 0},
                   {"localDisks", 0},
                   {"localDisksTotalSizeInGBs", nullptr}};
}

}  // namespace ocwemu
