// The value that functions with buffers put before their return addresses.
#pragma once

/// Once, before anything else runs.
void setSecurityCookie();
