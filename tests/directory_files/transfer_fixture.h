// What the tests of transfers share.
#pragma once

#include <string>

#include "directory_files/directory_world.h"

namespace depot::test {

// Makes local trees and trees of entries, and compares them.
class TransferTest : public DirectoryWorldTest {
protected:
    std::string At(const std::string& name) const { return world_.folder.At(name); }
    std::string Make(const std::string& name, const std::string& bytes) {
        return world_.folder.MakeFile(name, bytes);
    }
    // A local tree of two files and one subfolder.
    std::string MakeTree() {
        world_.folder.MakeFolder("tree\\sub");
        Make("tree\\a.kra", "1");
        Make("tree\\sub\\b.kra", "2");
        return At("tree");
    }
    // The same as entries.
    std::string AddTree(const std::string& name) {
        server_.AddFolder(name, base_);
        const std::string tree = DN("cn=" + name);
        server_.AddFile("a.kra", tree, "1");
        server_.AddFolder("sub", tree);
        server_.AddFile("b.kra", "cn=sub," + tree, "2");
        return tree;
    }
    // Three files whose names no local file may have.
    void AddHostileEntries(const std::string& dn) {
        server_.Apply("dn: cn=..\\5C..\\5Cx.kra," + dn +
                      "\nobjectClass: quillonFileBinary\ncn: ..\\..\\x.kra\n"
                      "quillonFileContentsBinary: x\n\n");
        server_.AddFile("C:x.kra", dn, "x");
        server_.AddFile("CON", dn, "x");
    }
    // Two files that are one in the ANSI code page, and so to the file system.
    void AddFilesOfOneLocalName(const std::string& dn) {
        server_.AddFile("L.kra", dn, "plain");
        server_.Apply("dn: cn=other.kra," + dn +
                      "\nobjectClass: quillonFileBinary\ncn: L.kra\ncn: other.kra\n"
                      "quillonFileContentsBinary: stroke\n\n");
    }
    // A file that is named like a folder, and a folder with a file that is named like a file.
    void AddUnusualNames(const std::string& dn) {
        server_.AddFile("README", dn, "3");
        server_.AddFolder("v1.2", dn);
        server_.AddFile("c.kra", "cn=v1.2," + dn, "4");
    }
    void ExpectTree(const std::string& dn) {
        EXPECT_EQ("1", Contents("cn=a.kra," + dn));
        EXPECT_EQ("2", Contents("cn=b.kra,cn=sub," + dn));
    }
    void ExpectFailure(std::uint32_t code) {
        EXPECT_EQ(code, Directory().LastError());
        EXPECT_EQ(MessageFor(code), error_);
    }
    OperationCounts Counts() { return server_.Counts(); }

    std::string error_ = "junk";
};

}  // namespace depot::test
