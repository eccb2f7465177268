// Construction, ownership and connection of the facade, and the two instance
// operations that combine a read with a write (DeleteVM, DeployVM).
#include "oraclecloud/OracleCloudWrapper.h"

#include <memory>
#include <utility>

#include "classic/OracleCloudClassicOperations.h"
#include "classic/OracleCloudClassicQueries.h"
#include "facade/FacadeForward.h"
#include "facade/OracleCloudBaseOperations.h"
#include "facade/OracleCloudBaseQueries.h"
#include "oci/OracleCloudInfrastructureOperations.h"
#include "oci/OracleCloudInfrastructureQueries.h"
#include "parser/OracleCloudInfrastructureParser.h"
#include "parser/OracleCloudParser.h"
#include "platform/DebugLog.h"
#include "transport/OracleCloudBaseConnection.h"
#include "transport/OracleCloudClassicConnection.h"
#include "transport/OracleCloudInfrastructureConnection.h"

namespace OracleCloudSDKWrapper {

namespace {

// Flags the facade uses when it only needs a VM's basic record.
constexpr unsigned long long kBasicVMFlags = 16;

// Builds the four backend objects of one cloud generation. Each is held by a
// unique_ptr until all exist, so a failing constructor leaks nothing.
template <class Parser, class Connection, class Queries, class Operations>
void BuildBackend(COracleCloudParser*& parserOut, COracleCloudBaseConnection*& connectionOut,
                  COracleCloudBaseQueries*& queriesOut, COracleCloudBaseOperations*& operationsOut) {
    std::unique_ptr<Parser> parser(new Parser());
    std::unique_ptr<Connection> connection(new Connection(parser.get()));
    std::unique_ptr<Queries> queries(new Queries(connection.get(), parser.get()));
    std::unique_ptr<Operations> operations(new Operations(connection.get(), parser.get()));
    parserOut = parser.release();
    connectionOut = connection.release();
    queriesOut = queries.release();
    operationsOut = operations.release();
}

}  // namespace

COracleCloudWrapper::COracleCloudWrapper(EOracleCloudType type)
    : m_connection(nullptr), m_parser(nullptr), m_queries(nullptr), m_operations(nullptr), m_cloudType(type) {
    if (type == ORACLE_CLOUD_INFRASTRUCTURE) {
        BuildBackend<COracleCloudInfrastructureParser, COracleCloudInfrastructureConnection,
                     COracleCloudInfrastructureQueries, COracleCloudInfrastructureOperations>(
            m_parser, m_connection, m_queries, m_operations);
    } else {
        BuildBackend<COracleCloudParser, COracleCloudClassicConnection, COracleCloudClassicQueries,
                     COracleCloudClassicOperations>(m_parser, m_connection, m_queries, m_operations);
    }
}

COracleCloudWrapper::COracleCloudWrapper(EOracleCloudType type, COracleCloudParser* parser,
                                         COracleCloudBaseConnection* connection, COracleCloudBaseQueries* queries,
                                         COracleCloudBaseOperations* operations)
    : m_connection(connection), m_parser(parser), m_queries(queries), m_operations(operations), m_cloudType(type) {}

COracleCloudWrapper::~COracleCloudWrapper() {
    // Queries and operations hold pointers to the connection and the parser, so
    // they go first; the connection goes last.
    delete m_operations;
    m_operations = nullptr;
    delete m_queries;
    m_queries = nullptr;
    delete m_parser;
    m_parser = nullptr;
    delete m_connection;
    m_connection = nullptr;
}

void COracleCloudWrapper::SetLogSink(OracleCloudLogSink sink) {
    if (!sink) {
        DebugLog::SetSink(nullptr);
        return;
    }
    DebugLog::SetSink([sink](const LogRecord& record) { sink(record.level, record.signature, record.text); });
}

void COracleCloudWrapper::SetLogLevel(int level) { DebugLog::SetThreshold(level); }

bool COracleCloudWrapper::Connect(const std::string& server, const std::string& user, const std::string& password,
                                  EOracleServiceType service) {
    if (!ForwardToBackend(errorSlot(), m_connection, [&](COracleCloudBaseConnection& connection) {
            return connection.connect(server, user, password, service);
        })) {
        return false;
    }
    return CheckConnection();
}

bool COracleCloudWrapper::CheckConnection() {
    return ForwardToBackend(errorSlot(), m_queries,
                            [](COracleCloudBaseQueries& queries) { return queries.CheckConnection(); });
}

bool COracleCloudWrapper::SetOperationTimeout(unsigned int seconds) {
    if (m_operations == nullptr) {
        return false;
    }
    // The backend's answer is not ours to report: OCI keeps its configured timeout.
    m_operations->SetOperationTimeout(seconds);
    return true;
}

bool COracleCloudWrapper::SetWebProxy(const std::string& proxy, const std::string& user,
                                      const std::string& password) {
    return m_connection != nullptr && m_connection->SetWebProxy(proxy, user, password);
}

std::string COracleCloudWrapper::GetDefaultRegion() {
    return m_connection != nullptr ? m_connection->getRegion() : std::string();
}

bool COracleCloudWrapper::DeleteVM(const std::string& vmName, const std::string& vmId, bool /*unusedOption*/,
                                   bool wait) {
    SVMInfoLib vm;
    if (!GetVMInfo(vmName, vmId, vm, kBasicVMFlags, std::string())) {
        return false;
    }
    // The first option is always true (OCI keeps the boot volume for a later
    // restore; Classic waits for the instance to go), whatever the caller asked.
    return ForwardToBackend(errorSlot(), m_operations, [&](COracleCloudBaseOperations& operations) {
        return operations.DeleteVM(vmName, vm.fullName, true, wait);
    });
}

bool COracleCloudWrapper::DeployVM(SVMInfoLib& vm, const std::string& templateId, const std::string& region) {
    SVMInfoLib templateInfo;
    if (!ForwardToBackend(errorSlot(), m_queries, [&](COracleCloudBaseQueries& queries) {
            return queries.GetTemplateInfo(templateId, templateInfo, region);
        })) {
        return false;
    }
    if (!ForwardToBackend(errorSlot(), m_operations,
                          [&](COracleCloudBaseOperations& operations) { return operations.DeployVM(vm, templateId); })) {
        return false;
    }
    return GetVMInfo(vm.vmName, vm.guid, vm, kBasicVMFlags, region);
}

}  // namespace OracleCloudSDKWrapper
