#pragma once
// The compute shapes the emulator offers: a few fixed VM and bare-metal
// shapes and two flexible ones.
#include "common/JsonUtil.h"

#include <string>
#include <vector>

namespace ocwemu {

struct ShapeInfo {
    std::string name;
    double ocpus;           // fixed shapes; default for flexible ones
    double memoryInGBs;
    double bandwidthGbps;
    int maxVnics;
    bool flexible;
    std::string processor;
    // Flexible shapes only.
    double minOcpus = 1, maxOcpus = 1;
    double memPerOcpuMin = 1, memPerOcpuMax = 64, memPerOcpuDefault = 16;
    double minMemory = 1, maxMemory = 1024;
};

const std::vector<ShapeInfo>& Shapes();
const ShapeInfo* FindShape(const std::string& name);
// The ListShapes entry of a shape.
JObject ShapeJson(const ShapeInfo& s);
// Instance.shapeConfig for a shape with the given OCPUs and memory.
JObject InstanceShapeConfig(const ShapeInfo& s, double ocpus, double memoryInGBs);

}  // namespace ocwemu
