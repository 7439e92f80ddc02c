// IntegrationWindow: a window beside a simulated series whose integration is made by hand, see
// integrationfixture.h.
#pragma once

#include "frameview/discitem.h"
#include "tests/window/integrationfixture.h"
#include "tests/window/reciprocaltest.h"
#include "window/integration/integrationcontroller.h"
#include "window/integration/profilewindow.h"
#include "window/integration/qualitytab.h"
#include "window/pages/integrationpage.h"
#include "window/plotpanel.h"

namespace tessera {

class IntegrationWindow : public Reciprocal {
protected:
    void SetUp() override
    {
        Reciprocal::SetUp();
        m_pPage = m_pWindow->findChild<IntegrationPage*>();
        m_pController = m_pWindow->findChild<IntegrationController*>();
        m_pTab = m_pWindow->findChild<QualityTab*>();
        ASSERT_TRUE(m_pPage);
        ASSERT_TRUE(m_pController);
        ASSERT_TRUE(m_pTab);
        m_result = quartzResult(g_nFrames);
        m_hostOfWindow = m_pController->host();
        m_pController->host().fnIntegrate = [this](const IntensityOptions& choices, CRunReport&,
                                                   IntegrationResult& result) {
            m_listChoices.push_back(choices);
            result = m_result;
            return RunOutcome();
        };
        m_pController->host().fnProfile = [](const IntegrationResult&, const Observation& observation,
                                             CRunReport&, ObservationProfile& profile) {
            profile = steepProfile(observation);
            return true;
        };
        open();
    }
    void integrate() { m_pPage->m_pButtonIntegrate->click(); }
    const std::vector<Observation>& observations() const { return m_result.integrated.listObservation; }
    PlotPanel* plot(const char* pszName) const { return m_pTab->findChild<PlotPanel*>(pszName); }
    /// The disc of an observation on the frame in view.
    DiscItem* discOf(const Observation& observation) const
    {
        const QPointF pt(observation.place.dfX + 0.5, observation.place.dfY + 0.5);
        for (DiscItem* pDisc : marks<DiscItem>()) {
            if (pDisc->pos() == pt) {
                return pDisc;
            }
        }
        return nullptr;
    }
    ProfileWindow* profile() const { return m_pWindow->findChild<ProfileWindow*>(); }

    static constexpr int g_nFrames = 31;

    IntegrationPage* m_pPage = nullptr;
    IntegrationController* m_pController = nullptr;
    QualityTab* m_pTab = nullptr;
    IntegrationResult m_result;
    IntegrationHost m_hostOfWindow;               ///< that computes and reads frames
    std::vector<IntensityOptions> m_listChoices;  ///< of each run
};

}  // namespace tessera
