#pragma once
// The service as it runs, minus its sockets: a store in a scratch folder, its
// pages, the demo account 0400000000 with the password "secret", and the one
// function that carries a connection's bytes through the transport.
#include <string>

// The reply to the bytes a client sent on one connection, as the service's
// transport frames them into a request and the page named by its path answers.
std::string Serve(const std::string& bytes);
