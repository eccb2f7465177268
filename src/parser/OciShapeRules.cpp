// Processor and memory figures of the fixed OCI shapes, derived from the shape
// name because the shape list answer of older tenancies gives only the name.
#include <cerrno>
#include <climits>
#include <cstdlib>

#include "parser/OracleCloudInfrastructureParser.h"

namespace OracleCloudSDKWrapper {

unsigned int getNumCPUFromOCIShape(const std::string& shape) {
    size_t dot = shape.rfind('.');
    if (dot == std::string::npos) return 0;
    // Leading digits only, like atoi ("36" and "36x" give 36), but without
    // atoi's undefined overflow and without wrapping a sign into a huge count.
    std::string tail = shape.substr(dot + 1);
    errno = 0;
    long value = std::strtol(tail.c_str(), nullptr, 10);
    if (errno == ERANGE || value <= 0) return 0;
    return value > INT_MAX ? static_cast<unsigned int>(INT_MAX) : static_cast<unsigned int>(value);
}

unsigned int getMemoryInGBsFromOCIShape(const std::string& shape) {
    struct Rule {
        const char* contains;
        unsigned long long perCpu;  // GB per processor, or 0 when fixed
        unsigned long long fixed;
    };
    // Order matters: the first rule whose text occurs in the name wins, so a
    // bare-metal DenseIO1 shape (no "VM.DenseIO") reaches "IO1.36".
    static const Rule kRules[] = {
        {"VM.Standard1.", 7, 0},   {"VM.Standard2.", 15, 0}, {"VM.DenseIO", 15, 0},
        {"BM.Standard1.36", 0, 256}, {"2.52", 0, 768},       {"IO1.36", 0, 512},
        {"BM.GPU2.2", 0, 192},
    };
    for (const Rule& rule : kRules) {
        if (shape.find(rule.contains) == std::string::npos) continue;
        if (rule.perCpu == 0) return static_cast<unsigned int>(rule.fixed);
        unsigned long long gb = rule.perCpu * getNumCPUFromOCIShape(shape);
        return gb > UINT_MAX ? UINT_MAX : static_cast<unsigned int>(gb);
    }
    return 0;
}

bool comparatorSInstanceShapeinfoLibSort(const SInstanceShapeInfoLib& a, const SInstanceShapeInfoLib& b) {
    return a.name < b.name;
}

bool comparatorSInstanceShapeinfoLib(const SInstanceShapeInfoLib& a, const SInstanceShapeInfoLib& b) {
    return a.name == b.name;
}

}  // namespace OracleCloudSDKWrapper
