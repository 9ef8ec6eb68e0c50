// The request as it goes out. For http_down; addresses that are shown are written by it, too.
#pragma once

#include <map>
#include <string>
#include <string_view>

// Appends a path as a request may hold it: "/" and what RFC 3986 allows in a path's segment as they
// are, every other byte as "%" and two digits. So a name of any bytes is found by a server as it is
// on its disk, and none can end the request's line.
void http_add_path(std::string& request, std::string_view path);

// A whole request: its line, with "http://" and `through` in front of the path if a proxy is to
// take it on (empty: none), the headers in the map's order, and the body with its length.
std::string http_request_text(bool post, std::string_view through, std::string_view path,
                              const std::map<std::string, std::string>& headers,
                              std::string_view body);
