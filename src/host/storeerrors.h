#pragma once

// Error numbers of the site store. They travel in olvex::Error like every host error, so a
// program prints "number, description" or just the description, as it prefers.

namespace olvex::StoreError {

// The connection text names no store this program can open (unknown scheme, bad URI).
inline constexpr int BadConnectionText = 3001;
// The file or database exists but holds no site of this system.
inline constexpr int NotASite = 3002;
// The site was written by a newer program; opening it could lose what that program keeps.
inline constexpr int NewerSchema = 3003;
// The database server or file cannot be reached or opened.
inline constexpr int CannotConnect = 3004;
// A statement failed (disk full, constraint, lost connection, ...).
inline constexpr int SqlFailed = 3005;
// The target already holds a site and replacing it was not asked for.
inline constexpr int SiteExists = 3006;
// No site at the given place (a path that does not exist, an empty database).
inline constexpr int NoSite = 3007;
// The site knows no such user.
inline constexpr int UnknownUser = 3008;
// An argument the store cannot accept (mode of a value write, an unknown PID, ...).
inline constexpr int InvalidRequest = 3009;
// The PID has no definition.
inline constexpr int UnknownPid = 3010;
// A value does not fit the data type of the setting it is written to (the host system's own
// number for a type mismatch).
inline constexpr int TypeMismatch = 13;

} // namespace olvex::StoreError
