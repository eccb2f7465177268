#pragma once
// The library's version, from the build (the project version in CMake).
#ifndef OCW_LIBRARY_VERSION
#define OCW_LIBRARY_VERSION "0.0.0"
#endif

namespace OracleCloudSDKWrapper {

inline const char* LibraryVersion() { return OCW_LIBRARY_VERSION; }

// What the library calls itself in a User-Agent header: "OracleCloudSDKWrapper/1.0.0".
inline const char* LibraryUserAgent() { return "OracleCloudSDKWrapper/" OCW_LIBRARY_VERSION; }

}  // namespace OracleCloudSDKWrapper
