#pragma once
// Every record and enumeration that crosses the library boundary.
#include "oraclecloud/OracleCloudTypes.h"
#include "oraclecloud/OracleCloudMessageRecords.h"
#include "oraclecloud/OracleCloudNetworkRecords.h"
#include "oraclecloud/OracleCloudStorageRecords.h"
#include "oraclecloud/OracleCloudComputeRecords.h"
#include "oraclecloud/OracleCloudDatabaseRecords.h"
