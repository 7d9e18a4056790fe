#include "platform/pki/secret_p.h"

#include <openssl/crypto.h>

void wipe(QString& text)
{
    if (text.isDetached())
        OPENSSL_cleanse(text.data(), std::size_t(text.size()) * sizeof(QChar));
}

void wipe(QByteArray& bytes)
{
    if (!bytes.isEmpty())
        OPENSSL_cleanse(const_cast<char*>(bytes.constData()), std::size_t(bytes.size()));
}

Secret& Secret::operator=(const Secret& other)
{
    if (this != &other) {
        wipe();
        m_bytes = QByteArray(other.m_bytes.constData(), other.m_bytes.size());
    }
    return *this;
}

void Secret::wipe()
{
    ::wipe(m_bytes);
    m_bytes.clear();
}
