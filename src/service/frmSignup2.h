#pragma once
// The phone details of sign-up: make, model, country and network, in four
// lists fetched from the service. Choosing a make fetches its models;
// choosing a country fetches its networks into gstrProviders, five items a
// network (id, name, number prefix, least and greatest number of digits),
// in the order of cmbNetworkOperator's entries.
#include "skin/CSkinWindow.h"

#include <QStringList>

class CSignUpManager;
class QComboBox;

// The pair loop of the list pages: "id,name,id,name," gives one entry a name,
// with its id as item data. The loop stops one field short of the last, so a
// reply without its trailing "," loses its last name. An id that is not a
// whole number raises CError. The entry named chosen, if any, is selected as
// it is added, which fires the list's click.
void AddPairs(QComboBox* list, const QString& reply, const QString& chosen = {});
// The networks of one country, five fields a network: an entry named by the
// second field, with the first as item data. The loop runs one group past
// the end, so it always ends in CError, with the entries added so far standing.
void AddProviderGroups(QComboBox* list, const QStringList& providers);

class frmSignup2 : public CSkinWindow {
    Q_OBJECT
public:
    explicit frmSignup2(CSignUpManager& road);

    QComboBox* cmbPhoneMake = nullptr;
    QComboBox* cmbPhoneModel = nullptr;
    QComboBox* cmbCountry = nullptr;
    QComboBox* cmbNetworkOperator = nullptr;
    CPictureButton* imgSend = nullptr;
    CPictureButton* imgBack = nullptr;
    QLabel* imgTalkingToServer = nullptr;

    // Fills the window from the service; true if every list came.
    bool LoadLists();

protected:
    void Form_Load() override;

private:
    bool LoadProviders();
    bool LoadVendors();
    bool LoadTerminalTypes(const QString& VendorID);
    bool LoadCountryProviders(const QString& CountryID);
    bool Initialize();

    void cmbCountry_Click(int index);
    void cmbPhoneMake_Click(int index);
    void imgSend_Released();
    void imgBack_Released();
    void lblClose_Click();

    CSignUpManager& mRoad;
};
