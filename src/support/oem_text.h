// The register's OEM code page.
#pragma once

#include <string>

// Neither converts nor copies: dst is left alone, and texts reach the register in the host's own
// bytes. Called in place wherever a text would be converted.
void CharToOem(char* src, char* dst);
void OemToChar(char* src, char* dst);

// Puts a text into a field of the register: in its code page, padded with spaces or cut to the
// width.
void PutOemText(const std::string& text, unsigned char* field, std::size_t width);
// The text in the host's code page.
std::string FromOem(std::string text);

// Text of the system's last error: always empty on this platform.
std::string GetLastErrorMsg();
