#include "cadexchange/CZemtarCADExchangeReader.h"
#include "host/CZemtarDocument.h"

#include <iostream>
#include <memory>

int main(int argc, char** argv)
{
    Zemtar::CZemtarCADExchangeReader reader;
    reader.SetCADReaderType(Zemtar::CZemtarCADExchangeReader::eReaderSTEP);
    reader.setTessellationFactor(50);
    reader.setUseParallelProcessing(false);
    const std::unique_ptr<Zemtar::CZemtarDocument> document(reader.Import(argc > 1 ? argv[1] : ""));
    std::cout << (document ? document->RootNodes().size() : 0) << " roots\n";
    return document && !document->RootNodes().empty() ? 0 : 1;
}
