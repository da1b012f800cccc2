/**
 * @file
 * @brief The catalogue of the application's data sources, and the ODBC drivers that open them.
 */
#ifndef QEL_DATA_SOURCES_UTILITIES_H
#define QEL_DATA_SOURCES_UTILITIES_H

#include "qelArray.h"
#include "qelExport.h"
#include "qelString.h"

/**
 * @brief One data source of the catalogue.
 * @ingroup configuration
 *
 * A name, the platform it is meant for, and the connection string.
 *
 * @par Example
 * @code
 * const qelDataSource bolts(L"Bolts", L"DRIVER={Varnel ODBC Driver};DBQ=Bolts.mdb", L"x64");
 * bolts.m_Platform;                                                                          // == L"x64"
 * bolts == qelDataSource(L"BOLTS", L"", L"X64");                                             // == true
 * @endcode
 */
class QEL_API qelDataSource
{
public:
    /// All three texts empty.
    qelDataSource();

    /// Mind the order: the platform, which stands second among the fields, comes last.
    qelDataSource(const qelString& name, const qelString& connectionString, const qelString& platform);

    /// Shares the texts of `other`.
    qelDataSource(const qelDataSource& other);

    /// Gives up its share of the texts.
    virtual ~qelDataSource();

    /// Shares the texts of `other`.
    qelDataSource& operator=(const qelDataSource& other);

    /// Whether name and platform are equal, each without regard to case; the connection string takes no part.
    bool operator==(const qelDataSource& other) const;

    qelString m_Name;             ///< such as "PelionProfiles2020"
    qelString m_Platform;         ///< platform that the entry is meant for, such as "x64"
    qelString m_ConnectionString; ///< full ODBC connection string
};

static_assert(sizeof(qelDataSource) == 56, "virtual table and three texts");

/**
 * @brief Catalogue of data sources and ODBC drivers.
 * @ingroup configuration
 *
 * The catalogues and models of the application live in ODBC databases. This class knows them by name and platform:
 * three built-in ones, whose connection strings come from the registry, and those of the configuration file
 * "DatabaseConfiguration.xml" below the data folder. It also knows which ODBC drivers are installed and writes every
 * connection string of the catalogue for a driver that will load.
 *
 * @par Example
 * @code
 * // "PelionProfiles2020" is registered, but its database file is missing.
 * qelDataSourcesUtilities sources;
 * qelString connection;
 * sources.getConnectionString(L"PelionProfiles2020", connection, L"x64"); // == 1
 *
 * qelString head, file;
 * qelDataSourcesUtilities::splitConnectionString(connection, head, file); // == 1
 * file;                                                                   // == L"D:\\Data\\PelionProfiles2020.mdb"
 * qelDataSourcesUtilities::testConnection(connection);                    // == 0, no such file
 * sources.getConnectionString(L"PelionProfiles1990", connection, L"x64"); // == 0, unknown
 * @endcode
 *
 * @par Ownership
 * All state belongs to the process and stays until it ends; objects of the class hold none. Texts are handed out as
 * copies.
 *
 * @par Threads
 * Unguarded; keep all use on one thread, or let one call to getConnectionString() finish first.
 *
 * @par Cost
 * The catalogue is read once, on the first question, and again only after a different configuration file has been
 * named; the list of drivers once per process. A search takes the same time among a few data sources and thousands.
 *
 * @par Failure
 * Results are numbers as each member says. Lack of memory surfaces from the members of the catalogue; those of the
 * drivers throw nothing. It leaves both lists complete or unread: the next call with memory reads them. Trouble with
 * the ODBC installer library is shown to the user in a message box, which waits for an answer.
 */
class QEL_API qelDataSourcesUtilities
{
public:
    /**
     * Names the configuration file for the whole process; without one it is
     * "\Configuration\DatabaseConfiguration.xml" below the data folder. A path that differs from the one before by more
     * than letter case empties the catalogue, so that the next getConnectionString() reads it again. Nothing is read
     * here.
     */
    explicit qelDataSourcesUtilities(qelString configurationFile = qelString());

    /// There is nothing to copy: all objects look at the same catalogue.
    qelDataSourcesUtilities(const qelDataSourcesUtilities& other);

    /// The catalogue stays.
    virtual ~qelDataSourcesUtilities();

    /// Changes nothing.
    qelDataSourcesUtilities& operator=(const qelDataSourcesUtilities& other);

    /// @name Catalogue
    /// @{

    /**
     * Sets `connectionString` to the one of the first data source of that name and platform, both compared without
     * regard to case, and returns 1 when it can be used. The built-in data sources come first and so win over entries
     * of the configuration file; the first call reads drivers and catalogue.
     *
     * - A connection string that contains one of the names "PelionProfiles2020", "QELMapping2020" and
     *   "PelionCurrentProject" is returned unchanged, with 1.
     * - In any other, the data folder and a backslash are inserted behind the first "DBQ=", whatever path follows; the
     *   result is 1. The path of "PelionCurrentProject" already begins with the data folder and so shows it twice.
     * - Without "DBQ=" the result is 0 and `connectionString` holds the text as it is.
     * - For an unknown data source, and one whose connection string is empty, the result is 0 and `connectionString`
     *   is empty. An unknown name is reported to the debugger.
     */
    int getConnectionString(qelString name, qelString& connectionString, qelString platform);

    /**
     * Cuts a connection string behind its first "DBQ=" (in this letter case): `head` ends with "DBQ=", `databaseFile`
     * is all that follows, further attributes included. Returns 1; without "DBQ=" both are empty and the result is 0.
     */
    static int splitConnectionString(qelString connectionString, qelString& head, qelString& databaseFile);

    /**
     * Sets `connectionString` to one that opens the database file, taken as it is, with the driver of
     * getOdbcDriverName(), user name and password empty. Always returns 1.
     */
    static int getConnectionStringForFile(qelString databaseFile, qelString& connectionString);
    /// @}

    /// @name Drivers
    /// The default driver is "Microsoft Access Driver (*.mdb, *.accdb)", the alternate one "Varnel ODBC Driver".
    /// @{

    /**
     * Returns the number of installed ODBC drivers. They are asked for once per process, or on every call for as long
     * as nothing could be found out. Where the ODBC installer library is missing or too old, each such call tells the
     * user in a message box.
     */
    static int readInstalledOdbcDrivers();

    /// 1 when the default driver is installed, -1 when others are but it is not, 0 when no driver is known.
    static int defaultODBCDriverIsInstalled();

    /**
     * Sets `driverName` to the driver for new connection strings: the alternate one where the default driver is known
     * to be missing, else the default one. Always returns 1; without the memory for a name it is empty.
     */
    static int getOdbcDriverName(qelString& driverName);

    /**
     * Replaces, in letter case as written, every mention of the default driver by the alternate one where the default
     * driver is known to be missing, else every mention of the alternate one by the default one. Returns the number of
     * replacements; for an empty text 0, without asking for drivers.
     */
    static int replaceAlternateDriver(qelString& connectionString);

    /**
     * The result of defaultODBCDriverIsInstalled(), save that it is 0 when drivers are known and a data source of the
     * catalogue names the alternate driver. Does not read the catalogue: an unread one names no driver.
     */
    static int defaultDriverIsUsedInAllDataSources();

    /**
     * Connects for real, without prompting, and disconnects again. Returns 1 when that worked, 0 when it did not and
     * what follows "DBQ=" names no existing file, -1 for any other failure. A 1 does not prove a sound database: some
     * drivers connect to an empty or damaged file, and only a query tells. Takes as long as the driver does.
     */
    static int testConnection(qelString connectionString);
    /// @}

private:
    class Drivers;

    /// Appends the built-in data sources and those of the configuration file; returns the number of entries.
    int readConnectionStrings();

    static qelArray<qelDataSource>& m_DataSources;      ///< in the order they were read; empty means not yet read
    static qelArray<qelString>& m_InstalledOdbcDrivers; ///< in the installer's order; empty means not known
    static qelString* m_pDatabaseConfigurationFilePath; ///< null until the first object is constructed
};

static_assert(sizeof(qelDataSourcesUtilities) == 8, "virtual table only");

#endif
