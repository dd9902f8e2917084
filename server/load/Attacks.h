#pragma once
// Misbehaving clients for the service's benchmarks.
#include <string>

// Holds this many connections that trickle a byte of a handshake now and
// then, from loopback addresses other than 127.0.0.1, opening a new one each
// time the service cuts one off; prints "holding" once all are open and
// "held=N reopened=R" at the end.
int HoldSlowConnections(const std::string& host, int port, int connections, double seconds);

// Sends 100 requests of each hostile kind (a body of separators to the upload
// page, an upload announcing a gigabyte, an endless chunked body, a million
// header lines) over this many connections at once; prints
// "requests=N failed=F" where failed were not refused as they should be.
int SendHostileRequests(const std::string& host, int port, int connections);
