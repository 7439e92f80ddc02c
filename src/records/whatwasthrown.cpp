#include "records/whatwasthrown.h"

#include "records/shortmemory.h"

#include <exception>

namespace tessera {

QString whatWasThrown()
{
    const QString strError = QStringLiteral("Error: %1");
    try {
        throw;
    } catch (const CShortMemory& error) {  // its text is UTF-8 in any locale, as it has names of files
        return strError.arg(error.text());
    } catch (const std::exception& error) {
        return strError.arg(QString::fromLocal8Bit(error.what()));
    } catch (const wchar_t* pszReason) {
        return strError.arg(QString::fromWCharArray(pszReason).trimmed());
    }
}

}  // namespace tessera
