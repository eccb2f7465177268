#pragma once
#include <string>

#include "parser/OracleCloudParser.h"

namespace OracleCloudSDKWrapper {

// The OCI mapping. Overrides Convert for the records the OCI backend reads;
// the walking (ParseObject, ParseList, ParseQueryResult, ...) is inherited, so
// lists and single objects reach these overloads through the virtual call.
// Every overload returns true: a key that is absent or of another kind leaves
// its field at the default. Stateless; the Classic-only overloads are
// inherited unchanged.
class COracleCloudInfrastructureParser : public COracleCloudParser {
public:
    COracleCloudInfrastructureParser() = default;
    ~COracleCloudInfrastructureParser() override = default;

    using COracleCloudParser::Convert;

    bool Convert(const JsonObject& obj, SVMInfoLib& out) override;
    bool Convert(const JsonObject& obj, SNetworkInfoLib& out) override;
    bool Convert(const JsonObject& obj, SDiskInfoLib& out) override;
    bool Convert(const JsonObject& obj, SStorageAttachmentInfoLib& out) override;
    bool Convert(const JsonObject& obj, SOracleDBInstanceInfoLib& out) override;
    bool Convert(const JsonObject& obj, SContainerInfoLib& out) override;
    bool Convert(const JsonObject& obj, SImageInfoLib& out) override;
    bool Convert(const JsonObject& obj, SSubnetInfoLib& out) override;
    bool Convert(const JsonObject& obj, SRegionInfoLib& out) override;
    bool Convert(const JsonObject& obj, SAvailabilityDomainInfoLib& out) override;
    bool Convert(const JsonObject& obj, SInstanceShapeInfoLib& out) override;
    bool Convert(const JsonObject& obj, SBootVolumeAttachmentInfo& out) override;
    bool Convert(const JsonObject& obj, SInstanceCredentialsInfoLib& out) override;
    bool Convert(const JsonObject& obj, STenancyInfoLib& out) override;
    bool Convert(const JsonObject& obj, SVnicAttachmentInfoLib& out) override;
    bool Convert(const JsonObject& obj, SVNicInfoLib& out) override;
    bool Convert(const JsonObject& obj, SOCIDbBackupConfigLib& out) override;
    bool Convert(const JsonObject& obj, SOCIDbBackupInfoLib& out) override;
    bool Convert(const JsonObject& obj, SOCIDbHomeInfoLib& out) override;
    bool Convert(const JsonObject& obj, SOCIDbSystemInfoLib& out) override;
    bool Convert(const JsonObject& obj, SOCIDatabaseInfoLib& out) override;
    bool Convert(const JsonObject& obj, SOCIDbNodeInfoLib& out) override;
    bool Convert(const JsonObject& obj, SStorageBucketInfoLib& out) override;
    bool Convert(const JsonObject& obj, SStorageObjectInfoLib& out) override;
    bool Convert(const JsonObject& obj, SSnapshotInfoLib& out) override;
    bool Convert(const JsonObject& obj, SAPIErrorInfoLib& out) override;

    // Search-service items ("identifier" instead of "id").
    bool ConvertQueryItem(const JsonObject& obj, SNetworkInfoLib& out) override;
    bool ConvertQueryItem(const JsonObject& obj, SSubnetInfoLib& out) override;
};

// Processor count of a fixed OCI shape: the number after the last "." of its
// name ("VM.Standard2.4" gives 4); 0 when there is no "." or the last part does
// not start with a number (".Micro", ".Flex").
unsigned int getNumCPUFromOCIShape(const std::string& shape);

// Memory in GB of a fixed OCI shape, by the first matching rule on its name:
// "VM.Standard1." 7 GB per CPU, "VM.Standard2." and "VM.DenseIO" 15 GB per CPU,
// "BM.Standard1.36" 256, "2.52" 768, "IO1.36" 512, "BM.GPU2.2" 192, otherwise 0
// (flexible shapes: the memory comes from an instance's shapeConfig).
unsigned int getMemoryInGBsFromOCIShape(const std::string& shape);

// Shape lists are sorted with the first (byte-wise ascending by name) and then
// made unique with the second (equal names).
bool comparatorSInstanceShapeinfoLibSort(const SInstanceShapeInfoLib& a, const SInstanceShapeInfoLib& b);
bool comparatorSInstanceShapeinfoLib(const SInstanceShapeInfoLib& a, const SInstanceShapeInfoLib& b);

}  // namespace OracleCloudSDKWrapper
