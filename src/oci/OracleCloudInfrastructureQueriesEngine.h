#pragma once
// The list, search and probe engines of COracleCloudInfrastructureQueries.
// Templates over the record type; only the .cpp files of the queries class
// include this header.
#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "oci/OciLifecycleState.h"
#include "oci/OciRegionSwitch.h"
#include "oci/OracleCloudInfrastructureQueries.h"
#include "oraclecloud/OracleCloudRecords.h"
#include "parser/OracleCloudParser.h"
#include "platform/JsonHelper.h"
#include "transport/OracleCloudBaseConnection.h"

namespace OracleCloudSDKWrapper {

template <COracleCloudInfrastructureQueries::PageKind Kind, typename T>
bool COracleCloudInfrastructureQueries::_CollectPages(const std::string& path, const std::string& searchBody,
                                                      std::vector<T>& out) {
    // Object listings page through "start=" and a "nextStartWith" member of
    // the answer; every other list through "page=" and the opc-next-page header.
    constexpr bool kSearch = Kind == PageKind::Search;
    constexpr bool kObjects = Kind == PageKind::Objects;
    std::string token;
    do {
        const std::string url = _GetPageUrl(path, token, kObjects ? "start" : "page");
        std::string response;
        bool answered;
        if constexpr (kSearch) {
            answered = m_connection->post(url, searchBody, response);
        } else {
            answered = m_connection->get(url, response, false, true);
        }
        if (!answered) {
            SetLastErrorFromFailedRequest(response, m_connection->GetLastError());
            return false;
        }
        std::vector<T> page;
        bool parsed;
        if constexpr (kSearch) {
            parsed = m_parser->ParseQueryResult(response, page);
        } else if constexpr (kObjects) {
            parsed = m_parser->ParseList(response, "objects", page);
        } else {
            parsed = m_parser->ParseList(response, page);
        }
        if (!parsed) {
            OCW_LOG_ERROR(&m_debugLog, "Failed to parse query result");
            return false;
        }
        OCW_LOG_LVL(2, &m_debugLog, "partial list size: [%d]", static_cast<int>(page.size()));
        out.insert(out.end(), std::make_move_iterator(page.begin()), std::make_move_iterator(page.end()));
        if constexpr (kObjects) {
            JsonValue document;
            JsonHelper::Parse(response, document);
            token = document.is_object() ? JsonHelper::GetStringValue(document.get_object(), "nextStartWith")
                                         : std::string();
        } else {
            token = _GetNextPageTokenFromHeader(m_connection->getHttpResponseHeader("opc-next-page"));
        }
    } while (!token.empty());
    return true;
}

template <typename T>
bool COracleCloudInfrastructureQueries::_GetPaginatedList(const std::string& path, EOracleServiceType type,
                                                          const std::string& region, std::vector<T>& out) {
    OciRegionSwitch regionSwitch(m_connection, region, &m_debugLog);
    m_connection->setService(type);
    return _CollectPages<PageKind::List>(path, std::string(), out);
}

template <typename T>
bool COracleCloudInfrastructureQueries::_ExecuteSearchServiceQuery(const std::string& query,
                                                                   const std::string& region, std::vector<T>& out) {
    OCW_LOG_LVL(2, &m_debugLog, "Query: [%s]", query.c_str());
    OciRegionSwitch regionSwitch(m_connection, region, &m_debugLog);
    m_connection->setService(OCI_SERVICE_SEARCH);
    JsonObject details;
    details["type"] = "Structured";
    details["query"] = query;
    // The page travels in the query string; the body stays the same for every page.
    const std::string body = JsonHelper::Serialize(details);
    return _CollectPages<PageKind::Search>(std::string("/20180409") + "/resources", body, out);
}

template <typename T>
bool COracleCloudInfrastructureQueries::_CheckIfResourceExists(const std::string& path, bool& exists,
                                                               EOracleServiceType type, const std::string& region) {
    if (type != 0) {
        m_connection->setService(type);
    }
    // Unlike the other engines this one leaves the region switched.
    if (!region.empty()) {
        m_connection->setRegion(region);
    }
    std::string response;
    if (!m_connection->get(path, response, false, true)) {
        long code = m_connection->getLastHTTPErrorCode();
        if (code == 404 || code == 400) {
            exists = false;
            return true;
        }
        OCW_LOG_DEBUG(&m_debugLog, "Connection Error");
        SetLastErrorFromFailedRequest(response, m_connection->GetLastError());
        return false;
    }
    T record{};
    if (!m_parser->ParseObject(response, record)) {
        OCW_LOG_ERROR(&m_debugLog, "Error parsing the response JSON");
        return false;
    }
    exists = ocilifecycle::State(record) != "TERMINATED";
    return true;
}

template <typename T>
bool COracleCloudInfrastructureQueries::_ReadSingle(const std::string& path, EOracleServiceType type,
                                                    const std::string& region, T& record) {
    std::string response;
    if (!_connectAndRunQuery(path, type, region, response)) {
        return false;
    }
    if (!m_parser->ParseObject(response, record)) {
        OCW_LOG_ERROR(&m_debugLog, "Error parsing the response JSON");
        return false;
    }
    return true;
}

template <typename T>
void COracleCloudInfrastructureQueries::_FilterDeletedItems(std::vector<T>& items, const std::string& state) {
    items.erase(std::remove_if(items.begin(), items.end(),
                               [&state](const T& item) { return ocilifecycle::State(item) == state; }),
                items.end());
}

template <typename T>
bool COracleCloudInfrastructureQueries::_GetFirstNonDeletedItemFromList(const std::vector<T>& items,
                                                                        const std::string& state, T& record) {
    // Callers rely on the whole list being walked: the last qualifying item wins.
    bool found = false;
    for (const T& item : items) {
        if (ocilifecycle::State(item) != state) {
            record = item;
            found = true;
        }
    }
    return found;
}

}  // namespace OracleCloudSDKWrapper
