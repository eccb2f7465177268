#pragma once
// Enumerations shared by the facade, its caller and both backends.

namespace OracleCloudSDKWrapper {

// Which generation of the cloud a facade talks to. Only the value 2 selects the
// Infrastructure (OCI) backend; every other value builds the Classic backend, and
// 1 additionally switches on the Compute Classic disk-slot rules (index 1..10,
// attachments looked up by disk). Values outside the named ones are accepted and
// behave like 0: the fixed underlying type makes any int a caller casts to it a
// defined value.
enum EOracleCloudType : int {
    ORACLE_CLOUD_UNSPECIFIED = 0,     // Classic backend, no Compute disk-slot rules
    ORACLE_CLOUD_CLASSIC = 1,         // Compute Classic (and its PaaS services)
    ORACLE_CLOUD_INFRASTRUCTURE = 2,  // OCI, signed REST
    ORACLE_CLOUD_CLASSIC_PAAS = 3,    // Classic backend used for PaaS only
};

// The service (endpoint family) a connection addresses. Classic connections
// accept 1 (session login) and 2, 8, 9 (PaaS, basic credentials); the OCI
// connection maps 3..7 and 10 to the first label of the endpoint host. Any other
// value has no endpoint (and, with the fixed underlying type, is still a defined
// value to hold and compare).
enum EOracleServiceType : int {
    ORACLE_SERVICE_UNKNOWN = 0,
    ORACLE_SERVICE_COMPUTE = 1,           // Compute Classic
    ORACLE_SERVICE_PAAS_DATABASE = 2,     // Classic PaaS: database (DBCS)
    OCI_SERVICE_CORE = 3,                 // "iaas."
    OCI_SERVICE_DATABASE = 4,             // "database."
    OCI_SERVICE_AUDIT = 5,                // "audit."
    OCI_SERVICE_IDENTITY = 6,             // "identity."
    OCI_SERVICE_OBJECT_STORAGE = 7,       // "objectstorage."
    ORACLE_SERVICE_PAAS_JAVA = 8,         // Classic PaaS: Java Cloud Service
    ORACLE_SERVICE_PAAS_MYSQL = 9,        // Classic PaaS: MySQL Cloud Service
    OCI_SERVICE_SEARCH = 10,              // "query."
};

}  // namespace OracleCloudSDKWrapper
