<xsl:stylesheet version="1.0" xmlns:xsl="http://www.w3.org/1999/XSL/Transform" xmlns:d="urn:d" exclude-result-prefixes="d">
  <xsl:output omit-xml-declaration="yes" indent="yes"/>
  <xsl:template match="/">
    <results>
      <xsl:apply-templates select="d:r"/>
    </results>
  </xsl:template>
  <xsl:template match="d:r">
    <copy-of><xsl:copy-of select="namespace::p"/></copy-of>
    <copy><xsl:for-each select="namespace::p"><xsl:copy>not shown</xsl:copy></xsl:for-each></copy>
    <d:all><xsl:copy-of select="namespace::*"/></d:all>
    <moved-by-default><xsl:copy-of select="namespace::*"/></moved-by-default>
    <twice xmlns:p="urn:p"><xsl:copy-of select="namespace::p"/><xsl:for-each select="namespace::p"><xsl:copy>not shown</xsl:copy></xsl:for-each></twice>
    <taken xmlns:p="urn:other"><xsl:copy-of select="namespace::p"/></taken>
    <p:taken-by-name xmlns:p="urn:other"><xsl:copy-of select="namespace::p"/></p:taken-by-name>
    <in-force><xsl:copy-of select="namespace::p"/><xsl:copy-of select="*"/></in-force>
    <xml><xsl:copy-of select="namespace::xml"/></xml>
    <behind>text<xsl:copy-of select="namespace::p"/></behind>
    <xsl:variable name="fragment"><xsl:copy-of select="namespace::p"/></xsl:variable>
    <fragment><xsl:copy-of select="$fragment"/></fragment>
    <xsl:variable name="fragment-element"><e><xsl:copy-of select="namespace::p"/></e></xsl:variable>
    <xsl:copy-of select="$fragment-element"/>
    <xsl:for-each select="$fragment-element"><xsl:for-each select="*"><in-a-tree><xsl:copy-of select="namespace::p"/></in-a-tree></xsl:for-each></xsl:for-each>
  </xsl:template>
</xsl:stylesheet>
