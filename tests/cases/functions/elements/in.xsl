<xsl:stylesheet version="1.0" xmlns:xsl="http://www.w3.org/1999/XSL/Transform" xmlns:p="urn:p">
<xsl:output method="text"/>
<xsl:template match="/">
<xsl:for-each select="names/n">
<xsl:value-of select="concat(., ' ', element-available(concat('xsl:', .)), ' ', element-available(.), ' ', element-available(concat('p:', .)))"/>
<xsl:text>
</xsl:text>
</xsl:for-each>
</xsl:template>
</xsl:stylesheet>
