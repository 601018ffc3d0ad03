<xsl:stylesheet version="1.0" xmlns:xsl="http://www.w3.org/1999/XSL/Transform" xmlns:d="urn:d" exclude-result-prefixes="d">
  <xsl:output method="html"/>
  <xsl:template match="/d:r"><xsl:copy-of select="namespace::p"/><html><xsl:copy-of select="namespace::p"/><body/></html></xsl:template>
</xsl:stylesheet>
