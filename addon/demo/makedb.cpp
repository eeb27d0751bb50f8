// Builds an SQLite database from an SQL script: zel-makedb SCRIPT OUTPUT.
// The database is written beside OUTPUT under a temporary name and renamed when complete,
// so that a failed build never leaves a half-filled database behind.

#include <sqlite3.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <sstream>
#include <string>

namespace {

int failWith(const std::string& message, const std::filesystem::path& partial) {
    std::cerr << "zel-makedb: " << message << '\n';
    std::error_code ignored;
    std::filesystem::remove(partial, ignored);
    return 1;
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 3) {
        std::cerr << "usage: zel-makedb SCRIPT OUTPUT\n";
        return 2;
    }
    const std::filesystem::path script = argv[1];
    const std::filesystem::path output = argv[2];
    const std::filesystem::path partial = output.string() + ".partial";

    std::ifstream in(script, std::ios::binary);
    if (!in)
        return failWith("cannot read " + script.string(), partial);
    std::ostringstream text;
    text << in.rdbuf();

    std::error_code error;
    if (output.has_parent_path())
        std::filesystem::create_directories(output.parent_path(), error);
    std::filesystem::remove(partial, error);

    sqlite3* db = nullptr;
    if (sqlite3_open_v2(partial.c_str(), &db, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE,
                        nullptr) != SQLITE_OK) {
        const std::string why = db ? sqlite3_errmsg(db) : "out of memory";
        sqlite3_close(db);
        return failWith("cannot create " + partial.string() + ": " + why, partial);
    }
    char* message = nullptr;
    const int rc = sqlite3_exec(db, text.str().c_str(), nullptr, nullptr, &message);
    if (rc != SQLITE_OK) {
        const std::string why = message ? message : sqlite3_errstr(rc);
        sqlite3_free(message);
        sqlite3_close(db);
        return failWith(script.string() + ": " + why, partial);
    }
    if (sqlite3_close(db) != SQLITE_OK)
        return failWith("cannot finish " + partial.string(), partial);

    std::filesystem::rename(partial, output, error);
    if (error)
        return failWith("cannot rename to " + output.string() + ": " + error.message(), partial);
    return 0;
}
