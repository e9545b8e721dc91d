// Records of storage locations with something in every member, and without.
#pragma once

#include <gtest/gtest.h>

#include "config/depot_path.h"

namespace depot::test {

// Addresses that are only compared, never followed.
inline CDepotPaths* const kOwner = reinterpret_cast<CDepotPaths*>(0x1000);
inline CDepotPaths* const kOtherOwner = reinterpret_cast<CDepotPaths*>(0x2000);
inline void* const kHandle = reinterpret_cast<void*>(0x3000);

inline void ExpectDirectoryDefaults(const CDepotPath& location) {
    EXPECT_EQ("", location.host);
    EXPECT_EQ("", location.username);
    EXPECT_EQ("", location.password);
    EXPECT_EQ("", location.fileAttributeName);
    EXPECT_EQ("", location.fileObjectClass);
    EXPECT_EQ("", location.folderAttributeName);
    EXPECT_EQ("", location.folderObjectClass);
    EXPECT_EQ("", location.fileContentsAttributeName);
    EXPECT_EQ(389u, location.port);
    EXPECT_EQ(kSimpleAuthentication, location.authentication);
    EXPECT_EQ(3u, location.version);
    EXPECT_EQ(120u, location.connectTimeout);
    EXPECT_EQ(0u, location.security);
    EXPECT_EQ("", location.credentialTarget);
    EXPECT_EQ(0u, location.detectConflicts);
    EXPECT_EQ(0u, location.followReferrals);
    EXPECT_EQ(0u, location.offline);
    EXPECT_EQ(100u, location.offlineSize);
    EXPECT_EQ(0u, location.keepConnection);
}

inline void FillWithJunk(CDepotPath& location) {
    location.type = 1;
    location.path = "path";
    location.host = "host";
    location.username = "user";
    location.password = "secret";
    location.fileAttributeName = "fileAttribute";
    location.fileObjectClass = "fileClass";
    location.folderAttributeName = "folderAttribute";
    location.folderObjectClass = "folderClass";
    location.fileContentsAttributeName = "contents";
    location.port = 10;
    location.authentication = 11;
    location.version = 12;
    location.connectTimeout = 13;
    location.locationText = "location";
    location.handleSlot = kHandle;
    location.indexSlot = 14;
    location.security = 15;
    location.credentialTarget = "target";
    location.detectConflicts = 16;
    location.followReferrals = 17;
    location.offline = 18;
    location.offlineSize = 19;
    location.keepConnection = 20;
}

// Compares all but the handle slot.
inline void ExpectJunk(const CDepotPath& location) {
    EXPECT_EQ(kDirectoryLocation, location.type);
    EXPECT_EQ("path", location.path);
    EXPECT_EQ("host", location.host);
    EXPECT_EQ("user", location.username);
    EXPECT_EQ("secret", location.password);
    EXPECT_EQ("fileAttribute", location.fileAttributeName);
    EXPECT_EQ("fileClass", location.fileObjectClass);
    EXPECT_EQ("folderAttribute", location.folderAttributeName);
    EXPECT_EQ("folderClass", location.folderObjectClass);
    EXPECT_EQ("contents", location.fileContentsAttributeName);
    EXPECT_EQ(10u, location.port);
    EXPECT_EQ(11u, location.authentication);
    EXPECT_EQ(12u, location.version);
    EXPECT_EQ(13u, location.connectTimeout);
    EXPECT_EQ("location", location.locationText);
    EXPECT_EQ(14, location.indexSlot);
    EXPECT_EQ(15u, location.security);
    EXPECT_EQ("target", location.credentialTarget);
    EXPECT_EQ(16u, location.detectConflicts);
    EXPECT_EQ(17u, location.followReferrals);
    EXPECT_EQ(18u, location.offline);
    EXPECT_EQ(19u, location.offlineSize);
    EXPECT_EQ(20u, location.keepConnection);
}

}  // namespace depot::test
