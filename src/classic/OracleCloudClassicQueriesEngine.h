#pragma once
// The link readers and the directory walk of COracleCloudClassicQueries.
// Templates over the record type; only the .cpp files of the queries class
// include this header.
#include <string>
#include <utility>
#include <vector>

#include "classic/OracleCloudClassicQueries.h"
#include "parser/OracleCloudParser.h"
#include "transport/OracleCloudBaseConnection.h"

namespace OracleCloudSDKWrapper {

namespace classicqueries {

// Every list link ends in "/" (collections and user containers are listed
// with a trailing "/", and the rule is applied blindly, query strings included).
inline std::string ListLink(const std::string& link) {
    if (!link.empty() && link.back() == '/') return link;
    return link + "/";
}

// A name from a listing, below the collection root: "/Compute-acme/" under
// "instance/" is "instance/Compute-acme/", never relative to the parent URL.
inline std::string ChildLink(const std::string& base, const std::string& name) {
    return base + (!name.empty() && name.front() == '/' ? name.substr(1) : name);
}

}  // namespace classicqueries

template <typename T>
bool COracleCloudClassicQueries::GetListFromLink(const std::string& link, std::vector<T>& list,
                                                 bool directoryListing) {
    std::string response;
    if (!readLink(classicqueries::ListLink(link), response, directoryListing)) {
        return false;
    }
    const char* key = isPaaS() ? "services" : "result";
    if (!m_parser->ParseList(response, key, list)) {
        SetLastError("Failed to parse the list of [" + link + "]");
        return false;
    }
    return true;
}

template <typename T>
bool COracleCloudClassicQueries::GetObjectFromLink(const std::string& link, T& record) {
    std::string response;
    if (!readLink(link, response, false)) {
        return false;
    }
    if (!m_parser->ParseObject(response, record)) {
        SetLastError("Failed to parse the object [" + link + "]");
        return false;
    }
    return true;
}

template <typename T>
bool COracleCloudClassicQueries::GetListFromURITraversal(const std::string& uri, int levels, std::vector<T>& list) {
    if (!isWalkDepth(levels)) {
        return false;
    }
    const std::string base = classicqueries::ListLink(uri);
    std::vector<std::string> current(1, std::string());
    for (; levels != 0; --levels) {
        std::vector<std::string> names;
        for (const std::string& name : current) {
            const std::string url = classicqueries::ChildLink(base, name);
            if (levels == 1) {
                if (!GetListFromLink<T>(url, list, false)) {
                    OCW_LOG_ERROR(&m_debugLog, "failed to retreive objects for [%s]", url.c_str());
                    return false;
                }
            } else if (!GetListFromLink(url, names)) {
                OCW_LOG_ERROR(&m_debugLog, "failed to traverse children for [%s] ", url.c_str());
                return false;
            }
        }
        current = std::move(names);
    }
    return true;
}

}  // namespace OracleCloudSDKWrapper
