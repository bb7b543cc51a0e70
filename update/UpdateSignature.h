#pragma once
// The maker's signature over an update's manifest: Ed25519 in minisign's format, checked against
// the public keys that only root can put into the instrument's read-only root image. Both of
// minisign's signatures count: the message itself ("Ed") or its BLAKE2b-512 hash ("ED", minisign's
// default); the trusted comment is signed too and checked with it.

#include <array>
#include <cstdint>
#include <string>
#include <vector>

struct SUpdateKey {
    std::string name;  // the key file's path, for the log
    std::array<unsigned char, 8> id{};
    std::array<unsigned char, 32> key{};
};

struct SUpdateSignature {
    bool prehashed = false;
    std::array<unsigned char, 8> keyId{};
    std::array<unsigned char, 64> signature{};
    std::string trustedComment;
    std::array<unsigned char, 64> commentSignature{};
};

// A minisign public key file: comment lines, then the key in base64.
bool ParseUpdateKey(const std::string& text, SUpdateKey& key, std::string& cause);
// A minisign signature file: an untrusted comment, the signature, the trusted comment and its
// signature, one a line.
bool ParseUpdateSignature(const std::string& text, SUpdateSignature& signature, std::string& cause);
// The signature is a provisioned key's over message, and so is its trusted comment's.
bool VerifyUpdateSignature(const std::string& message, const SUpdateSignature& signature,
                           const std::vector<SUpdateKey>& keys, std::string& cause);

// The keys of a folder: every entry not starting with "." must be a key file. An absent or empty
// folder gives no key and true: the instrument then takes unsigned updates, as it always did.
bool LoadUpdateKeys(const std::string& folder, std::vector<SUpdateKey>& keys, std::string& cause);
