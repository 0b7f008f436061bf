#pragma once

class GlbLayout;
class OutputFile;

/// Writes the JSON chunk's content, filled up to four bytes.
void WriteGlbJson(const GlbLayout& layout, OutputFile& file);
