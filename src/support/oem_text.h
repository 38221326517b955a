// The register's OEM code page.
#pragma once

#include <string>

// Neither converts nor copies: dst is left alone, and texts reach the register in the host's own
// bytes. Called in place wherever a text would be converted.
void CharToOem(char* src, char* dst);
void OemToChar(char* src, char* dst);

// The text in the register's code page.
std::string ToOem(std::string text);
// The text in the host's code page.
std::string FromOem(std::string text);

// Text of the system's last error: always empty on this platform.
std::string GetLastErrorMsg();
