#pragma once
// The countries, networks, phone makers and models a new database starts
// with. Number rules are the national mobile numbers as people type them.
extern const char* const kSeedSql;
