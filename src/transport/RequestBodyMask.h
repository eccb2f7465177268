#pragma once
#include <string>

namespace OracleCloudSDKWrapper {

// The text of a request body that may be written to a log: members whose name
// names a secret (any case: "password", "pwd", "passphrase", "secret",
// "privatekey", "decryptionkey", "walletfile", for example adminPassword,
// cloudStoragePwd, administrator_password, ibkupCloudStoragePassword,
// ibkupDecryptionKey, ibkupWalletFileContent) have their value replaced
// by "********" at any depth. A non-empty body that is not JSON cannot be
// checked: it is replaced by a note of its length, unless keepNonJson is set
// (answers: error pages of proxies and load balancers are worth seeing).
std::string MaskSecretsInBody(const std::string& body, bool keepNonJson = false);

}  // namespace OracleCloudSDKWrapper
